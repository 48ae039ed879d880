#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "network/socket_calls.h"

namespace pxscheduler {

struct SocketAddress {
  sockaddr_storage storage{};
  socklen_t size = 0;

  void SetPort(std::uint16_t port);
};

enum class ResolveResult { kResolved, kUnknown, kTimedOut };

// Resolves host names and numeric addresses, with a time-out that the system's own resolver does
// not have. A look-up that took too long goes on in a thread of its own, which owns all that it
// touches; asking for the same name again waits for that one, so there is never more than one a
// name.
class Resolver {
 public:
  Resolver();
  ~Resolver();
  Resolver(const Resolver&) = delete;
  Resolver& operator=(const Resolver&) = delete;

  // Sets `addresses`, at least one, in the order in which they are to be tried, else `problem` to
  // the system's words for why there is none. Their port is 0.
  ResolveResult Resolve(const std::string& host, std::chrono::milliseconds time,
                        std::vector<SocketAddress>& addresses, std::string& problem);

 private:
  struct Lookup;
  std::shared_ptr<Lookup> pending_;
};

}  // namespace pxscheduler
