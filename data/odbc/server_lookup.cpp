#include "data/odbc/server_lookup.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "data/rows/session.h"
#include "network/socket_calls.h"
#include "platform/letter_case.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr char kUnicastInstanceRequest = 0x04;
constexpr char kServerResponse = 0x05;
constexpr std::size_t kResponseHeader = 3;  // the kind and a 16-bit size
constexpr milliseconds kAskAgainAfter{1000};

// Connected, so that the system drops answers from other addresses.
std::vector<Socket> OpenSockets(std::vector<SocketAddress> addresses, std::uint16_t port) {
  std::vector<Socket> sockets;
  for (SocketAddress& address : addresses) {
    address.SetPort(port);
    Socket socket(address.storage.ss_family, SOCK_DGRAM);
    if (socket.IsOpen() &&
        StartConnecting(socket.Handle(), address.storage, address.size) == ConnectStart::kConnected)
      sockets.push_back(std::move(socket));
  }
  return sockets;
}

// The first answer that names a port within `wait`, 0 where there is none.
std::uint16_t AwaitPort(const std::vector<Socket>& sockets, milliseconds wait) {
  std::vector<SocketHandle> waiting;
  waiting.reserve(sockets.size());
  for (const Socket& socket : sockets) waiting.push_back(socket.Handle());
  const auto until = Clock::now() + wait;
  for (;;) {
    const auto left = std::chrono::ceil<milliseconds>(until - Clock::now());
    if (left.count() <= 0) return 0;
    if (waiting.empty()) {
      std::this_thread::sleep_for(left);
      continue;
    }
    if (PollSockets(waiting, SocketEvent::kReadable, left) == PollResult::kFailed) return 0;
    std::uint16_t port = 0;
    std::erase_if(waiting, [&port](SocketHandle socket) {
      std::array<char, 2048> buffer;
      std::size_t size = 0;
      const TransferResult result = ReceiveSome(socket, buffer.data(), buffer.size(), size);
      if (result == TransferResult::kDone && port == 0)
        port = PortInBrowserAnswer(std::string_view(buffer.data(), size));
      return result == TransferResult::kFailed;  // refused: nobody listens there
    });
    if (port != 0) return port;
  }
}

}  // namespace

ResolvedHost ResolveHost(Resolver& resolver, const std::wstring& name, milliseconds timeout) {
  ResolvedHost host{.name = name, .addresses = {}};
  std::string problem;
  switch (resolver.Resolve(ToUtf8(name), timeout, host.addresses, problem)) {
    case ResolveResult::kUnknown:
      throw ProviderFailure(L"The server " + name + L" is unknown: " + FromUtf8(problem) + L".");
    case ResolveResult::kTimedOut:
      throw ProviderFailure(L"Looking up the address of the server " + name + L" took too long.");
    case ResolveResult::kResolved:
      break;
  }
  return host;
}

std::uint16_t PortInBrowserAnswer(std::string_view answer) {
  if (answer.size() < kResponseHeader || answer.front() != kServerResponse) return 0;
  std::string_view rest = answer.substr(kResponseHeader);
  // Names and values alternate, each ended by ";".
  const auto next = [&rest] {
    const std::size_t end = std::min(rest.find(';'), rest.size());
    const std::string_view part = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    return part;
  };
  while (!rest.empty()) {
    const std::string_view name = next();
    const std::string_view value = next();
    if (name != "tcp") continue;
    std::uint16_t port = 0;
    const auto read = std::from_chars(value.data(), value.data() + value.size(), port);
    return read.ec == std::errc() && read.ptr == value.data() + value.size() ? port : 0;
  }
  return 0;
}

std::uint16_t FindInstancePort(const ResolvedHost& host, const std::wstring& instance,
                               milliseconds timeout, std::uint16_t browser_port) {
  const auto until = Clock::now() + timeout;
  const SocketLibrary library;
  const std::vector<Socket> sockets = OpenSockets(host.addresses, browser_port);
  const std::string request = kUnicastInstanceRequest + ToUtf8(instance) + '\0';
  for (;;) {
    const auto left = std::chrono::ceil<milliseconds>(until - Clock::now());
    if (left.count() <= 0) break;
    // A request that fails to be sent is repeated as one that is lost.
    std::size_t sent = 0;
    for (const Socket& socket : sockets) (void)SendSome(socket.Handle(), request, sent);
    const std::uint16_t port = AwaitPort(sockets, std::min(left, kAskAgainAfter));
    if (port != 0) return port;
  }
  throw ProviderFailure(L"The SQL Server Browser of " + host.name +
                        L" names no TCP port of the instance " + instance + L".");
}

}  // namespace pxscheduler
