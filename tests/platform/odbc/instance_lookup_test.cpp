#include "platform/odbc/instance_lookup.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <string>
#include <thread>

#include "platform/runtime_error.h"

namespace pxscheduler {
namespace {

using std::chrono::milliseconds;

std::string BrowserAnswer(const std::string& text) {
  return std::string("\x05") + static_cast<char>(text.size()) + '\0' + text;
}

TEST(InstanceLookupTest, ReadsAnswers) {
  const struct {
    std::string answer;
    std::uint16_t port;
  } cases[] = {
      {BrowserAnswer("ServerName;DB1;InstanceName;ORBALIS;IsClustered;No;Version;15.0;tcp;49172;;"),
       49172},
      {BrowserAnswer(R"(ServerName;tcp;InstanceName;tcp;tcp;1444;np;\\DB1\pipe;;)"), 1444},
      {BrowserAnswer(R"(ServerName;DB1;np;\\DB1\pipe\sql\query;;)"), 0},
      {BrowserAnswer("tcp;70000;;"), 0},
      {BrowserAnswer("tcp;14x4;;"), 0},
      {BrowserAnswer("tcp"), 0},
      {std::string("\x04\x01\0", 3) + "tcp;1444;;", 0},
      {"", 0},
      {"\x05", 0},
  };
  for (const auto& each : cases)
    EXPECT_EQ(PortInBrowserAnswer(each.answer), each.port) << each.answer;
}

// A browser on a free UDP port that ignores the first request, as if it had been lost.
class LossyBrowser {
 public:
  LossyBrowser() : socket_(socket(AF_INET, SOCK_DGRAM, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    (void)bind(socket_, reinterpret_cast<sockaddr*>(&address), size);
    (void)getsockname(socket_, reinterpret_cast<sockaddr*>(&address), &size);
    port_ = ntohs(address.sin_port);
  }
  ~LossyBrowser() {
    shutdown(socket_, SHUT_RDWR);
    if (server_.joinable()) server_.join();
    close(socket_);
  }
  LossyBrowser(const LossyBrowser&) = delete;
  LossyBrowser& operator=(const LossyBrowser&) = delete;

  std::uint16_t Port() const { return port_; }
  void Serve(const std::string& expected_request, const std::string& answer) {
    server_ = std::thread([this, expected_request, answer] {
      std::array<char, 100> buffer{};
      sockaddr_in client{};
      for (int request = 0; request < 2; ++request) {
        socklen_t size = sizeof client;
        const ssize_t got = recvfrom(socket_, buffer.data(), buffer.size(), 0,
                                     reinterpret_cast<sockaddr*>(&client), &size);
        if (got <= 0 ||
            std::string(buffer.data(), static_cast<std::size_t>(got)) != expected_request) {
          return;
        }
      }
      sendto(socket_, answer.data(), answer.size(), 0, reinterpret_cast<sockaddr*>(&client),
             sizeof client);
    });
  }

 private:
  int socket_;
  std::uint16_t port_ = 0;
  std::thread server_;
};

TEST(InstanceLookupTest, AsksAgainWhenARequestIsLost) {
  LossyBrowser browser;
  browser.Serve(std::string("\x04Orbalis\0", 9), BrowserAnswer("tcp;1444;;"));
  EXPECT_EQ(FindInstancePort(L"127.0.0.1", L"Orbalis", milliseconds(5000), browser.Port()), 1444);
}

TEST(InstanceLookupTest, GivesUpInTime) {
  const LossyBrowser silent;
  const auto start = std::chrono::steady_clock::now();
  EXPECT_THROW(FindInstancePort(L"127.0.0.1", L"Orbalis", milliseconds(300), silent.Port()),
               RuntimeError);
  EXPECT_LT(std::chrono::steady_clock::now() - start, milliseconds(1500));
}

}  // namespace
}  // namespace pxscheduler
