#include "network/socket_calls.h"

#include <fcntl.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <utility>
#include <vector>

namespace pxscheduler {

namespace {

constexpr SocketHandle kNone = -1;

TransferResult Transferred(ssize_t result, std::size_t& bytes) {
  bytes = result > 0 ? static_cast<std::size_t>(result) : 0;
  if (result >= 0) return TransferResult::kDone;
  const bool may_go_on = errno == EINTR || errno == EAGAIN || errno == EWOULDBLOCK;
  return may_go_on ? TransferResult::kNotYet : TransferResult::kFailed;
}

}  // namespace

SocketLibrary::SocketLibrary() = default;
SocketLibrary::~SocketLibrary() = default;

Socket::Socket(int family, int type)
    : handle_(socket(family, type | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)) {}

Socket::Socket(Socket&& other) noexcept : handle_(std::exchange(other.handle_, kNone)) {}

Socket& Socket::operator=(Socket&& other) noexcept {
  std::swap(handle_, other.handle_);
  return *this;
}

Socket::~Socket() {
  if (IsOpen()) close(handle_);
}

bool Socket::IsOpen() const { return handle_ >= 0; }

PollResult PollSockets(std::span<const SocketHandle> sockets, SocketEvent event,
                       std::chrono::milliseconds time) {
  const short events = event == SocketEvent::kReadable ? POLLIN : POLLOUT;
  std::vector<pollfd> entries;
  entries.reserve(sockets.size());
  std::transform(sockets.begin(), sockets.end(), std::back_inserter(entries),
                 [events](int each) { return pollfd{.fd = each, .events = events, .revents = 0}; });
  const int ready = poll(entries.data(), entries.size(), static_cast<int>(time.count()));
  if (ready > 0) return PollResult::kReady;
  return ready == 0 || errno == EINTR ? PollResult::kNothing : PollResult::kFailed;
}

ConnectStart StartConnecting(SocketHandle socket, const sockaddr_storage& address, socklen_t size) {
  if (connect(socket, reinterpret_cast<const sockaddr*>(&address), size) == 0)
    return ConnectStart::kConnected;
  return errno == EINPROGRESS || errno == EINTR ? ConnectStart::kUnderWay : ConnectStart::kFailed;
}

int ConnectError(SocketHandle socket) {
  int error = 0;
  socklen_t size = sizeof(error);
  getsockopt(socket, SOL_SOCKET, SO_ERROR, &error, &size);
  return error == ECONNRESET ? 0 : error;
}

int LastSocketError() { return errno; }

std::string ResolverErrorText(int error) { return gai_strerror(error); }

TransferResult SendSome(SocketHandle socket, std::string_view bytes, std::size_t& sent) {
  return Transferred(send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL), sent);
}

TransferResult ReceiveSome(SocketHandle socket, char* bytes, std::size_t size,
                           std::size_t& received) {
  return Transferred(recv(socket, bytes, size, 0), received);
}

bool LetCallsWait(SocketHandle socket, std::chrono::milliseconds longest) {
  const timeval time{.tv_sec = longest.count() / 1000,
                     .tv_usec = static_cast<suseconds_t>(longest.count() % 1000 * 1000)};
  const int flags = fcntl(socket, F_GETFL);
  return flags >= 0 && setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &time, sizeof(time)) == 0 &&
         setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &time, sizeof(time)) == 0 &&
         fcntl(socket, F_SETFL, flags & ~O_NONBLOCK) == 0;
}

void SendWithoutDelay(SocketHandle socket) {
  const int on = 1;
  (void)setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
}

}  // namespace pxscheduler
