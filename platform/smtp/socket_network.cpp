#include "platform/smtp/socket_network.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include "platform/smtp/resolver.h"
#include "platform/smtp/tls_transport.h"

namespace pxscheduler {

namespace {

using std::chrono::milliseconds;

constexpr std::int32_t kHighestPort = 65535;

milliseconds TimeUntil(Deadline deadline) {
  return std::chrono::ceil<milliseconds>(deadline - std::chrono::steady_clock::now());
}

// Waits until the socket is ready for `events` (POLLIN or POLLOUT) or in error.
IoResult Wait(int socket, short events, Deadline deadline) {
  for (;;) {
    const milliseconds time = TimeUntil(deadline);
    if (time <= milliseconds(0)) {
      return IoResult::kTimedOut;
    }
    pollfd entry{.fd = socket, .events = events, .revents = 0};
    const int ready = poll(&entry, 1, static_cast<int>(time.count()));
    if (ready > 0) {
      return IoResult::kDone;
    }
    if (ready < 0 && errno != EINTR) {
      return IoResult::kBroken;
    }
  }
}

class Descriptor {
 public:
  explicit Descriptor(int value) : value_(value) {}
  Descriptor(Descriptor&& other) noexcept : value_(std::exchange(other.value_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(value_, other.value_);
    return *this;
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (value_ >= 0) {
      close(value_);
    }
  }

  int Value() const { return value_; }

 private:
  int value_;
};

// A blocking socket whose calls return after `granule` at the latest. That lets most calls wait
// without any other call to set or to watch a time-out; only where less than that is left until the
// deadline does a call have to be preceded by a wait.
class SocketTransport : public Transport {
 public:
  SocketTransport(Descriptor socket, milliseconds granule)
      : socket_(std::move(socket)), granule_(granule) {}

  IoResult Send(std::string_view bytes, Deadline deadline) override {
    while (!bytes.empty()) {
      const IoResult ready = WaitIfLittleTime(POLLOUT, deadline);
      if (ready != IoResult::kDone) {
        return ready;
      }
      const ssize_t sent = send(socket_.Value(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
      if (sent >= 0) {
        bytes.remove_prefix(static_cast<std::size_t>(sent));
      } else if (!MayGoOn(errno)) {
        return IoResult::kBroken;
      }
    }
    return IoResult::kDone;
  }

  IoResult Receive(char* bytes, std::size_t size, std::size_t& received,
                   Deadline deadline) override {
    received = 0;
    for (;;) {
      const IoResult ready = WaitIfLittleTime(POLLIN, deadline);
      if (ready != IoResult::kDone) {
        return ready;
      }
      const ssize_t count = recv(socket_.Value(), bytes, size, 0);
      if (count > 0) {
        received = static_cast<std::size_t>(count);
        return IoResult::kDone;
      }
      if (count == 0 || !MayGoOn(errno)) {
        return IoResult::kBroken;
      }
    }
  }

  std::string LocalAddress() const override {
    sockaddr_storage address{};
    socklen_t size = sizeof(address);
    if (getsockname(socket_.Value(), reinterpret_cast<sockaddr*>(&address), &size) != 0) {
      return {};
    }
    std::array<char, INET6_ADDRSTRLEN> text{};
    const void* number =
        address.ss_family == AF_INET6
            ? static_cast<const void*>(&reinterpret_cast<sockaddr_in6*>(&address)->sin6_addr)
            : static_cast<const void*>(&reinterpret_cast<sockaddr_in*>(&address)->sin_addr);
    const char* const written =
        inet_ntop(address.ss_family, number, text.data(), static_cast<socklen_t>(text.size()));
    return written == nullptr ? "" : written;
  }

 private:
  static bool MayGoOn(int error) {
    return error == EINTR || error == EAGAIN || error == EWOULDBLOCK;
  }

  IoResult WaitIfLittleTime(short events, Deadline deadline) const {
    return TimeUntil(deadline) > granule_ ? IoResult::kDone
                                          : Wait(socket_.Value(), events, deadline);
  }

  Descriptor socket_;
  milliseconds granule_;
};

void SetPort(SocketAddress& address, std::uint16_t port) {
  if (address.storage.ss_family == AF_INET6) {
    reinterpret_cast<sockaddr_in6*>(&address.storage)->sin6_port = htons(port);
  } else {
    reinterpret_cast<sockaddr_in*>(&address.storage)->sin_port = htons(port);
  }
}

// Connects a socket that does not block.
IoResult ConnectSocket(int socket, const SocketAddress& address, Deadline deadline) {
  if (connect(socket, reinterpret_cast<const sockaddr*>(&address.storage), address.size) == 0) {
    return IoResult::kDone;
  }
  if (errno != EINPROGRESS && errno != EINTR) {
    return IoResult::kBroken;
  }
  const IoResult ready = Wait(socket, POLLOUT, deadline);
  if (ready != IoResult::kDone) {
    return ready;
  }
  int error = 0;
  socklen_t size = sizeof(error);
  getsockopt(socket, SOL_SOCKET, SO_ERROR, &error, &size);
  // A connection that was accepted and reset at once did come about; reading from it tells the
  // rest.
  return error == 0 || error == ECONNRESET ? IoResult::kDone : IoResult::kBroken;
}

// Makes a connected socket block for `granule` at most, and send what it is given at once.
bool SetOptions(int socket, milliseconds granule) {
  const timeval time{.tv_sec = granule.count() / 1000,
                     .tv_usec = static_cast<suseconds_t>(granule.count() % 1000 * 1000)};
  const int on = 1;
  const int flags = fcntl(socket, F_GETFL);
  return flags >= 0 && fcntl(socket, F_SETFL, flags & ~O_NONBLOCK) == 0 &&
         setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &time, sizeof(time)) == 0 &&
         setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &time, sizeof(time)) == 0 &&
         setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on)) == 0;
}

class SocketNetwork : public Network {
 public:
  ConnectResult Connect(const std::string& host, std::int32_t port, const Timeouts& timeouts,
                        std::unique_ptr<Transport>& transport) override {
    std::vector<SocketAddress> addresses;
    switch (resolver_.Resolve(host, timeouts.resolve, addresses)) {
      case ResolveResult::kUnknown:
        return ConnectResult::kNameUnknown;
      case ResolveResult::kTimedOut:
        return ConnectResult::kNameTimedOut;
      case ResolveResult::kResolved:
        break;
    }
    if (port < 1 || port > kHighestPort) {
      return ConnectResult::kRefused;
    }
    const milliseconds granule =
        std::max(milliseconds(1), std::min(timeouts.reply, timeouts.data) / 4);
    bool timed_out = false;
    // Every address has its share of what is left, so that one that never answers does not use up
    // the time of those behind it.
    const Deadline deadline = std::chrono::steady_clock::now() + timeouts.connect;
    for (std::size_t i = 0; i < addresses.size(); ++i) {
      SetPort(addresses[i], static_cast<std::uint16_t>(port));
      const auto now = std::chrono::steady_clock::now();
      const Deadline share = now + (deadline - now) / static_cast<long>(addresses.size() - i);
      Descriptor descriptor(socket(addresses[i].storage.ss_family,
                                   SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, IPPROTO_TCP));
      if (descriptor.Value() < 0) {
        continue;
      }
      const IoResult result = ConnectSocket(descriptor.Value(), addresses[i], share);
      if (result == IoResult::kDone && SetOptions(descriptor.Value(), granule)) {
        transport = std::make_unique<SocketTransport>(std::move(descriptor), granule);
        return ConnectResult::kConnected;
      }
      timed_out = timed_out || result == IoResult::kTimedOut;
    }
    return timed_out ? ConnectResult::kTimedOut : ConnectResult::kRefused;
  }

  IoResult StartTls(std::unique_ptr<Transport>& transport, const std::string& host,
                    CertificateCheck check, Deadline deadline) override {
    return StartTlsOver(transport, host, check, deadline);
  }

  std::string HostName() const override {
    std::array<char, 256> name{};
    return gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "";
  }

 private:
  Resolver resolver_;
};

}  // namespace

std::unique_ptr<Network> NewSocketNetwork() { return std::make_unique<SocketNetwork>(); }

}  // namespace pxscheduler
