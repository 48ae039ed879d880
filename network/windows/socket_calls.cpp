#include "network/socket_calls.h"

#include <algorithm>
#include <limits>
#include <system_error>
#include <utility>

namespace pxscheduler {

namespace {

constexpr int kLargestTransfer = std::numeric_limits<int>::max();

SocketHandle NewSocket(int family, int type) {
  // The same as socket(), but for the handle that a child would inherit.
  const SocketHandle handle =
      WSASocketW(family, type, 0, nullptr, 0, WSA_FLAG_OVERLAPPED | WSA_FLAG_NO_HANDLE_INHERIT);
  u_long on = 1;
  if (handle != INVALID_SOCKET && ioctlsocket(handle, static_cast<long>(FIONBIO), &on) != 0) {
    closesocket(handle);
    return INVALID_SOCKET;
  }
  return handle;
}

TransferResult Transferred(int result, std::size_t& bytes) {
  bytes = result > 0 ? static_cast<std::size_t>(result) : 0;
  if (result >= 0) return TransferResult::kDone;
  return WSAGetLastError() == WSAEWOULDBLOCK ? TransferResult::kNotYet : TransferResult::kFailed;
}

int TransferSize(std::size_t size) {
  return static_cast<int>(std::min(size, static_cast<std::size_t>(kLargestTransfer)));
}

}  // namespace

SocketLibrary::SocketLibrary() {
  WSADATA data{};
  is_started_ = WSAStartup(MAKEWORD(2, 2), &data) == 0;
}

SocketLibrary::~SocketLibrary() {
  if (is_started_) WSACleanup();
}

Socket::Socket(int family, int type) : handle_(NewSocket(family, type)) {}

Socket::Socket(Socket&& other) noexcept : handle_(std::exchange(other.handle_, INVALID_SOCKET)) {}

Socket& Socket::operator=(Socket&& other) noexcept {
  std::swap(handle_, other.handle_);
  return *this;
}

Socket::~Socket() {
  if (IsOpen()) closesocket(handle_);
}

bool Socket::IsOpen() const { return handle_ != INVALID_SOCKET; }

// select rather than WSAPoll, which before Windows 10 never tells of a connection that failed.
PollResult PollSockets(std::span<const SocketHandle> sockets, SocketEvent event,
                       std::chrono::milliseconds time) {
  fd_set wanted{};
  for (const SocketHandle socket : sockets.first(std::min<std::size_t>(sockets.size(), FD_SETSIZE)))
    wanted.fd_array[wanted.fd_count++] = socket;
  fd_set failed = wanted;
  timeval limit{.tv_sec = static_cast<long>(time.count() / 1000),
                .tv_usec = static_cast<long>(time.count() % 1000 * 1000)};
  const bool reads = event == SocketEvent::kReadable;
  const int ready =
      select(0, reads ? &wanted : nullptr, reads ? nullptr : &wanted, &failed, &limit);
  if (ready > 0) return PollResult::kReady;
  return ready == 0 ? PollResult::kNothing : PollResult::kFailed;
}

ConnectStart StartConnecting(SocketHandle socket, const sockaddr_storage& address, socklen_t size) {
  if (connect(socket, reinterpret_cast<const sockaddr*>(&address), size) == 0)
    return ConnectStart::kConnected;
  return WSAGetLastError() == WSAEWOULDBLOCK ? ConnectStart::kUnderWay : ConnectStart::kFailed;
}

int ConnectError(SocketHandle socket) {
  int error = 0;
  socklen_t size = sizeof(error);
  getsockopt(socket, SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&error), &size);
  return error == WSAECONNRESET ? 0 : error;
}

int LastSocketError() { return WSAGetLastError(); }

std::string ResolverErrorText(int error) { return std::system_category().message(error); }

TransferResult SendSome(SocketHandle socket, std::string_view bytes, std::size_t& sent) {
  return Transferred(send(socket, bytes.data(), TransferSize(bytes.size()), 0), sent);
}

TransferResult ReceiveSome(SocketHandle socket, char* bytes, std::size_t size,
                           std::size_t& received) {
  return Transferred(recv(socket, bytes, TransferSize(size), 0), received);
}

// Winsock leaves a socket in no defined state after a call that SO_RCVTIMEO has ended.
bool LetCallsWait(SocketHandle /*socket*/, std::chrono::milliseconds /*longest*/) { return false; }

void SendWithoutDelay(SocketHandle socket) {
  const BOOL on = TRUE;
  (void)setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&on),
                   sizeof(on));
}

}  // namespace pxscheduler
