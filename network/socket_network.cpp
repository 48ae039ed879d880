#include "network/socket_network.h"

#include <algorithm>
#include <array>
#include <span>
#include <system_error>
#include <utility>

#include "network/resolver.h"
#include "network/socket_calls.h"
#include "network/tls_transport.h"

namespace pxscheduler {

namespace {

using std::chrono::milliseconds;

constexpr std::int32_t kHighestPort = 65535;

milliseconds TimeUntil(Deadline deadline) {
  return std::chrono::ceil<milliseconds>(deadline - std::chrono::steady_clock::now());
}

// "192.0.2.1", "2001:db8::1"; "" for an address of another kind.
std::string NumericText(const sockaddr_storage& address) {
  std::array<char, INET6_ADDRSTRLEN> text{};
  const void* number =
      address.ss_family == AF_INET6
          ? static_cast<const void*>(&reinterpret_cast<const sockaddr_in6*>(&address)->sin6_addr)
          : static_cast<const void*>(&reinterpret_cast<const sockaddr_in*>(&address)->sin_addr);
  const char* const written = inet_ntop(address.ss_family, number, text.data(), text.size());
  return written == nullptr ? "" : written;
}

// Waits until the socket is ready for the event or in error.
IoResult Wait(SocketHandle socket, SocketEvent event, Deadline deadline) {
  for (;;) {
    const milliseconds time = TimeUntil(deadline);
    if (time <= milliseconds(0)) return IoResult::kTimedOut;
    const PollResult result = PollSockets(std::span(&socket, 1), event, time);
    if (result != PollResult::kNothing)
      return result == PollResult::kReady ? IoResult::kDone : IoResult::kBroken;
  }
}

// A socket whose calls wait by themselves, for `granule` at the most. That lets most calls do
// without any other call to set or to watch a time-out; only where less than that is left until the
// deadline, and always where calls do not wait, is a call preceded by a wait.
class SocketTransport : public Transport {
 public:
  SocketTransport(Socket socket, milliseconds granule)
      : socket_(std::move(socket)),
        granule_(LetCallsWait(socket_.Handle(), granule) ? granule : milliseconds::max()) {
    SendWithoutDelay(socket_.Handle());
  }

  IoResult Send(std::string_view bytes, Deadline deadline) override {
    while (!bytes.empty()) {
      const IoResult ready = WaitIfLittleTime(SocketEvent::kWritable, deadline);
      if (ready != IoResult::kDone) return ready;
      std::size_t sent = 0;
      if (SendSome(socket_.Handle(), bytes, sent) == TransferResult::kFailed)
        return IoResult::kBroken;
      bytes.remove_prefix(sent);
    }
    return IoResult::kDone;
  }

  IoResult Receive(char* bytes, std::size_t size, std::size_t& received,
                   Deadline deadline) override {
    received = 0;
    for (;;) {
      const IoResult ready = WaitIfLittleTime(SocketEvent::kReadable, deadline);
      if (ready != IoResult::kDone) return ready;
      const TransferResult result = ReceiveSome(socket_.Handle(), bytes, size, received);
      if (result != TransferResult::kNotYet) {
        const bool is_open = result == TransferResult::kDone && received > 0;
        return is_open ? IoResult::kDone : IoResult::kBroken;
      }
    }
  }

  std::string LocalAddress() const override { return AddressBy(getsockname); }
  std::string PeerAddress() const override { return AddressBy(getpeername); }

 private:
  template <typename Function>
  std::string AddressBy(Function* function) const {
    sockaddr_storage address{};
    socklen_t size = sizeof(address);
    if (function(socket_.Handle(), reinterpret_cast<sockaddr*>(&address), &size) != 0) return {};
    return NumericText(address);
  }

  IoResult WaitIfLittleTime(SocketEvent event, Deadline deadline) const {
    return TimeUntil(deadline) > granule_ ? IoResult::kDone
                                          : Wait(socket_.Handle(), event, deadline);
  }

  SocketLibrary library_;
  Socket socket_;
  milliseconds granule_;
};

// Where it breaks, `error` is the system's number.
IoResult ConnectSocket(SocketHandle socket, const SocketAddress& address, Deadline deadline,
                       int& error) {
  switch (StartConnecting(socket, address.storage, address.size)) {
    case ConnectStart::kConnected:
      return IoResult::kDone;
    case ConnectStart::kFailed:
      error = LastSocketError();
      return IoResult::kBroken;
    case ConnectStart::kUnderWay:
      break;
  }
  const IoResult ready = Wait(socket, SocketEvent::kWritable, deadline);
  if (ready != IoResult::kDone) return ready;
  error = ConnectError(socket);
  return error == 0 ? IoResult::kDone : IoResult::kBroken;
}

class SocketNetwork : public Network {
 public:
  ConnectResult Connect(const std::string& host, std::int32_t port, const ConnectTimeouts& timeouts,
                        std::unique_ptr<Transport>& transport, std::string& problem) override {
    std::vector<SocketAddress> addresses;
    switch (resolver_.Resolve(host, timeouts.resolve, addresses, problem)) {
      case ResolveResult::kUnknown:
        return ConnectResult::kNameUnknown;
      case ResolveResult::kTimedOut:
        return ConnectResult::kNameTimedOut;
      case ResolveResult::kResolved:
        break;
    }
    if (port < 1 || port > kHighestPort) {
      problem = "there is no such port";
      return ConnectResult::kRefused;
    }
    const milliseconds granule = std::max(milliseconds(1), timeouts.shortest_step / 4);
    bool timed_out = false;
    // Every address has its share of what is left, so that one that never answers does not use up
    // the time of those behind it.
    const Deadline deadline = std::chrono::steady_clock::now() + timeouts.connect;
    for (std::size_t i = 0; i < addresses.size(); ++i) {
      addresses[i].SetPort(static_cast<std::uint16_t>(port));
      const auto now = std::chrono::steady_clock::now();
      const Deadline share = now + (deadline - now) / static_cast<long>(addresses.size() - i);
      Socket socket(addresses[i].storage.ss_family, SOCK_STREAM);
      int error = LastSocketError();
      const IoResult result = socket.IsOpen()
                                  ? ConnectSocket(socket.Handle(), addresses[i], share, error)
                                  : IoResult::kBroken;
      if (result == IoResult::kDone) {
        transport = std::make_unique<SocketTransport>(std::move(socket), granule);
        return ConnectResult::kConnected;
      }
      timed_out = timed_out || result == IoResult::kTimedOut;
      problem +=
          (problem.empty() ? "" : "; ") + NumericText(addresses[i].storage) + ": " +
          (result == IoResult::kTimedOut ? "no answer" : std::system_category().message(error));
    }
    return timed_out ? ConnectResult::kTimedOut : ConnectResult::kRefused;
  }

  IoResult StartTls(std::unique_ptr<Transport>& transport, const std::string& host,
                    CertificateCheck check, Deadline deadline, std::string& problem) override {
    return StartTlsOver(transport, host, check, deadline, problem);
  }

  std::string HostName() const override {
    std::array<char, 256> name{};
    return gethostname(name.data(), static_cast<int>(name.size() - 1)) == 0 ? name.data() : "";
  }

 private:
  SocketLibrary library_;
  Resolver resolver_;
};

}  // namespace

std::unique_ptr<Network> NewSocketNetwork() { return std::make_unique<SocketNetwork>(); }

}  // namespace pxscheduler
