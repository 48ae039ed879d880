#include "platform/odbc/instance_lookup.h"

#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "platform/code_page.h"
#include "platform/letter_case.h"
#include "platform/odbc/provider_error.h"

namespace pxscheduler {
namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr char kUnicastInstanceRequest = 0x04;
constexpr char kServerResponse = 0x05;
constexpr std::size_t kResponseHeader = 3;  // the kind and a 16-bit size
constexpr milliseconds kAskAgainAfter{1000};

class UdpSocket {
 public:
  explicit UdpSocket(const addrinfo& address)
      : descriptor_(socket(address.ai_family, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)) {
    // Connected, so that the kernel drops answers from anybody else.
    if (descriptor_ >= 0 && connect(descriptor_, address.ai_addr, address.ai_addrlen) != 0) Close();
  }
  ~UdpSocket() { Close(); }
  UdpSocket(UdpSocket&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  UdpSocket(const UdpSocket&) = delete;
  UdpSocket& operator=(const UdpSocket&) = delete;
  UdpSocket& operator=(UdpSocket&&) = delete;

  int Descriptor() const { return descriptor_; }
  // A request that is lost is sent again; there is nothing else to do about an error.
  void Send(std::string_view request) const {
    (void)send(descriptor_, request.data(), request.size(), MSG_NOSIGNAL);
  }
  std::optional<std::string_view> Receive(std::array<char, 2048>& buffer) const {
    const ssize_t size = recv(descriptor_, buffer.data(), buffer.size(), 0);
    if (size < 0) return std::nullopt;
    return std::string_view(buffer.data(), static_cast<std::size_t>(size));
  }

 private:
  void Close() {
    if (descriptor_ >= 0) close(std::exchange(descriptor_, -1));
  }

  int descriptor_;
};

std::vector<UdpSocket> OpenSockets(const std::wstring& host, std::uint16_t port) {
  addrinfo hints{};
  hints.ai_socktype = SOCK_DGRAM;
  addrinfo* found = nullptr;
  if (getaddrinfo(ToUtf8(host).c_str(), std::to_string(port).c_str(), &hints, &found) != 0) {
    throw ProviderFailure(L"The server " + host + L" is unknown.");
  }
  const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> addresses(found, freeaddrinfo);
  std::vector<UdpSocket> sockets;
  for (const addrinfo* address = found; address != nullptr; address = address->ai_next) {
    UdpSocket socket(*address);
    if (socket.Descriptor() >= 0) sockets.push_back(std::move(socket));
  }
  return sockets;
}

// The first answer that names a port within `wait`, 0 where there is none.
std::uint16_t AwaitPort(const std::vector<UdpSocket>& sockets, milliseconds wait) {
  std::vector<pollfd> polled;
  polled.reserve(sockets.size());
  for (const UdpSocket& socket : sockets) polled.push_back({socket.Descriptor(), POLLIN, 0});
  const auto until = Clock::now() + wait;
  for (;;) {
    const auto left = std::chrono::ceil<milliseconds>(until - Clock::now());
    if (left.count() <= 0 ||
        poll(polled.data(), polled.size(), static_cast<int>(left.count())) <= 0) {
      return 0;
    }
    for (std::size_t i = 0; i < polled.size(); ++i) {
      if (polled[i].revents == 0) continue;
      std::array<char, 2048> buffer;
      const auto answer = sockets[i].Receive(buffer);
      if (!answer) {
        polled[i].fd = -1;  // refused: nobody listens there, and asking again wakes it up
      } else if (const std::uint16_t port = PortInBrowserAnswer(*answer); port != 0) {
        return port;
      }
    }
  }
}

}  // namespace

std::uint16_t PortInBrowserAnswer(std::string_view answer) {
  if (answer.size() < kResponseHeader || answer.front() != kServerResponse) return 0;
  std::string_view rest = answer.substr(kResponseHeader);
  // Names and values take turns, each ended by ";".
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

std::uint16_t FindInstancePort(const std::wstring& host, const std::wstring& instance,
                               milliseconds timeout, std::uint16_t browser_port) {
  const auto until = Clock::now() + timeout;
  const std::vector<UdpSocket> sockets = OpenSockets(host, browser_port);
  const std::string request = kUnicastInstanceRequest + ToUtf8(instance) + '\0';
  for (;;) {
    const auto left = std::chrono::ceil<milliseconds>(until - Clock::now());
    if (left.count() <= 0) break;
    for (const UdpSocket& socket : sockets) socket.Send(request);
    const std::uint16_t port = AwaitPort(sockets, std::min(left, kAskAgainAfter));
    if (port != 0) return port;
  }
  throw ProviderFailure(L"The SQL Server Browser of " + host +
                        L" names no TCP port of the instance " + instance + L".");
}

}  // namespace pxscheduler
