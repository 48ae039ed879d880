#pragma once

#ifdef _WIN32
#include <winsock2.h>
#include <ws2tcpip.h>
#else
#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#endif

#include <chrono>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>

// What differs between the sockets of POSIX and those of Windows. All else about them (addresses,
// getaddrinfo, getsockname, inet_ntop, gethostname) is the same once these headers are read.

namespace pxscheduler {

#ifdef _WIN32
using SocketHandle = SOCKET;
#else
using SocketHandle = int;
#endif

// Whoever calls a function of sockets or holds a socket keeps one of these meanwhile.
class SocketLibrary {
 public:
  SocketLibrary();
  // NOLINTNEXTLINE(performance-trivially-destructible): not where there is a library to leave
  ~SocketLibrary();
  SocketLibrary(const SocketLibrary&) = delete;
  SocketLibrary& operator=(const SocketLibrary&) = delete;

 private:
  bool is_started_ = false;
};

// Owns a socket that does not block and that no child process inherits.
class Socket {
 public:
  // For instance AF_INET6 and SOCK_STREAM. Where the system has no such socket, IsOpen() says so.
  Socket(int family, int type);
  Socket(Socket&& other) noexcept;
  Socket& operator=(Socket&& other) noexcept;
  Socket(const Socket&) = delete;
  Socket& operator=(const Socket&) = delete;
  ~Socket();

  bool IsOpen() const;
  SocketHandle Handle() const { return handle_; }

 private:
  SocketHandle handle_;
};

enum class SocketEvent { kReadable, kWritable };
enum class PollResult {
  kReady,    // one of the sockets at least, or it is in error
  kNothing,  // the time is over, or a signal came
  kFailed,
};

// Waits for sockets, at most 64.
PollResult PollSockets(std::span<const SocketHandle> sockets, SocketEvent event,
                       std::chrono::milliseconds time);

enum class ConnectStart { kConnected, kUnderWay, kFailed };

ConnectStart StartConnecting(SocketHandle socket, const sockaddr_storage& address, socklen_t size);
// 0 where a connection that was under way came about, once the socket is writable or in error, else
// the system's number of the error. One that was accepted and reset at once did; reading from it
// tells the rest.
int ConnectError(SocketHandle socket);
// The number of the error of the call that failed last.
int LastSocketError();
// The system's words for what getaddrinfo returned.
std::string ResolverErrorText(int error);

enum class TransferResult { kDone, kNotYet, kFailed };

// Sends some of the bytes, `sent` says how many.
TransferResult SendSome(SocketHandle socket, std::string_view bytes, std::size_t& sent);
// Receives at most `size` bytes, or one datagram; 0 bytes of a stream are its end.
TransferResult ReceiveSome(SocketHandle socket, char* bytes, std::size_t size,
                           std::size_t& received);

// Makes the calls on a connected socket wait by themselves, for `longest` at most, and usable after
// that. False where the system has no such calls; the socket goes on without blocking.
bool LetCallsWait(SocketHandle socket, std::chrono::milliseconds longest);

// Makes a stream hand over what it is given at once (TCP_NODELAY).
void SendWithoutDelay(SocketHandle socket);

}  // namespace pxscheduler
