#include "data/odbc/server_lookup.h"

#include <gtest/gtest.h>

#include <array>
#include <future>
#include <span>
#include <string>

#include "network/socket_calls.h"
#include "tests/support/raised_by.h"

namespace pxscheduler {
namespace {

using std::chrono::milliseconds;

std::string BrowserAnswer(const std::string& text) {
  return std::string("\x05") + static_cast<char>(text.size()) + '\0' + text;
}

TEST(ServerLookupTest, ReadsAnswersOfABrowser) {
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
      {"\x05", 0},
  };
  for (const auto& [answer, port] : cases) EXPECT_EQ(PortInBrowserAnswer(answer), port) << answer;
}

// A UDP port of this machine.
class Browser {
 public:
  Browser() {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    (void)bind(socket_.Handle(), reinterpret_cast<sockaddr*>(&address), size);
    (void)getsockname(socket_.Handle(), reinterpret_cast<sockaddr*>(&address), &size);
    port_ = ntohs(address.sin_port);
  }

  std::uint16_t Port() const { return port_; }
  std::string Receive() {
    const SocketHandle socket = socket_.Handle();
    (void)PollSockets(std::span(&socket, 1), SocketEvent::kReadable, milliseconds(5000));
    constexpr int kLongest = 100;
    std::array<char, kLongest> buffer{};
    client_size_ = sizeof client_;
    const auto size = recvfrom(socket, buffer.data(), kLongest, 0,
                               reinterpret_cast<sockaddr*>(&client_), &client_size_);
    return {buffer.data(), size < 0 ? 0 : static_cast<std::size_t>(size)};
  }
  // Answers whoever sent what was received last.
  void Answer(const std::string& answer) {
    std::size_t sent = 0;
    (void)StartConnecting(socket_.Handle(), client_, client_size_);
    (void)SendSome(socket_.Handle(), answer, sent);
  }

 private:
  SocketLibrary library_;
  Socket socket_{AF_INET, SOCK_DGRAM};
  std::uint16_t port_ = 0;
  sockaddr_storage client_{};
  socklen_t client_size_ = 0;
};

std::uint16_t FindPort(const Browser& browser, milliseconds timeout) {
  Resolver resolver;
  return FindInstancePort(ResolveHost(resolver, L"127.0.0.1", milliseconds(1000)), L"Orbalis",
                          timeout, browser.Port());
}

TEST(ServerLookupTest, AsksABrowserAgainUntilItNamesAPort) {
  Browser browser;
  const std::string request("\x04Orbalis\0", 9);
  auto port = std::async([&] { return FindPort(browser, milliseconds(8000)); });
  EXPECT_EQ(browser.Receive(), request);
  EXPECT_EQ(browser.Receive(), request) << "as if the first had been lost";
  browser.Answer(BrowserAnswer("tcp;none;;"));
  browser.Answer(BrowserAnswer("tcp;1444;;"));
  EXPECT_EQ(port.get(), 1444);
}

TEST(ServerLookupTest, GivesUp) {
  const Browser silent;
  EXPECT_THROW(FindPort(silent, milliseconds(100)), RuntimeError);
  Resolver resolver;
  const auto look_up = [&](const wchar_t* name, int timeout) {
    return RaisedBy([&] { ResolveHost(resolver, name, milliseconds(timeout)); }).description;
  };
  EXPECT_TRUE(
      look_up(L"no host at all", 5000).starts_with(L"The server no host at all is unknown: "));
  EXPECT_EQ(look_up(L"host.invalid", 0),
            L"Looking up the address of the server host.invalid took too long.");
}

}  // namespace
}  // namespace pxscheduler
