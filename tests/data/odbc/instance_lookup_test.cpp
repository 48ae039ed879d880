#include "data/odbc/instance_lookup.h"

#include <gtest/gtest.h>

#include <array>
#include <span>
#include <stop_token>
#include <string>
#include <thread>

#include "network/socket_calls.h"
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
  LossyBrowser() {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    (void)bind(socket_.Handle(), reinterpret_cast<sockaddr*>(&address), size);
    (void)getsockname(socket_.Handle(), reinterpret_cast<sockaddr*>(&address), &size);
    port_ = ntohs(address.sin_port);
  }

  std::uint16_t Port() const { return port_; }
  void Serve(const std::string& expected_request, const std::string& answer) {
    server_ = std::jthread([this, expected_request, answer](const std::stop_token& over) {
      const SocketHandle socket = socket_.Handle();
      for (int requests = 0; !over.stop_requested();) {
        if (PollSockets(std::span(&socket, 1), SocketEvent::kReadable, milliseconds(20)) !=
            PollResult::kReady)
          continue;
        constexpr int kLongest = 100;
        std::array<char, kLongest> buffer{};
        sockaddr_storage client{};
        socklen_t size = sizeof client;
        const auto got = recvfrom(socket, buffer.data(), kLongest, 0,
                                  reinterpret_cast<sockaddr*>(&client), &size);
        if (got <= 0 ||
            std::string(buffer.data(), static_cast<std::size_t>(got)) != expected_request)
          return;
        if (++requests == 2) {
          std::size_t sent = 0;
          (void)StartConnecting(socket, client, size);
          (void)SendSome(socket, answer, sent);
        }
      }
    });
  }

 private:
  SocketLibrary library_;
  Socket socket_{AF_INET, SOCK_DGRAM};
  std::uint16_t port_ = 0;
  std::jthread server_;
};

ResolvedHost Loopback() {
  Resolver resolver;
  return ResolveHost(resolver, L"127.0.0.1", milliseconds(1000));
}

TEST(InstanceLookupTest, AsksAgainWhenARequestIsLost) {
  LossyBrowser browser;
  browser.Serve(std::string("\x04Orbalis\0", 9), BrowserAnswer("tcp;1444;;"));
  EXPECT_EQ(FindInstancePort(Loopback(), L"Orbalis", milliseconds(5000), browser.Port()), 1444);
}

TEST(InstanceLookupTest, GivesUpInTime) {
  const LossyBrowser silent;
  const std::uint16_t nobody = LossyBrowser().Port();
  for (const std::uint16_t port : {silent.Port(), nobody}) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_THROW(FindInstancePort(Loopback(), L"Orbalis", milliseconds(300), port), RuntimeError);
    EXPECT_LT(std::chrono::steady_clock::now() - start, milliseconds(1500));
  }
}

TEST(HostLookupTest, SaysThatAHostIsUnknownOrTakesTooLong) {
  Resolver resolver;
  EXPECT_THROW(ResolveHost(resolver, L"no host at all", milliseconds(5000)), RuntimeError);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_THROW(ResolveHost(resolver, L"host.invalid", milliseconds(0)), RuntimeError);
  EXPECT_LT(std::chrono::steady_clock::now() - start, milliseconds(1500));
}

}  // namespace
}  // namespace pxscheduler
