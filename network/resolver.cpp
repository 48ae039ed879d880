#include "network/resolver.h"

#include <condition_variable>
#include <cstring>
#include <mutex>
#include <thread>
#include <utility>

namespace pxscheduler {

namespace {

// `error` is what getaddrinfo returned.
std::vector<SocketAddress> LookUp(const std::string& host, int flags, int& error) {
  addrinfo hints{};
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = flags;
  addrinfo* found = nullptr;
  std::vector<SocketAddress> addresses;
  error = getaddrinfo(host.c_str(), nullptr, &hints, &found);
  if (error != 0) return addresses;
  const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owner(found, &freeaddrinfo);
  for (const addrinfo* entry = found; entry != nullptr; entry = entry->ai_next) {
    if (entry->ai_addrlen <= sizeof(sockaddr_storage)) {
      SocketAddress address;
      std::memcpy(&address.storage, entry->ai_addr, entry->ai_addrlen);
      address.size = static_cast<socklen_t>(entry->ai_addrlen);
      addresses.push_back(address);
    }
  }
  return addresses;
}

}  // namespace

void SocketAddress::SetPort(std::uint16_t port) {
  if (storage.ss_family == AF_INET6)
    reinterpret_cast<sockaddr_in6*>(&storage)->sin6_port = htons(port);
  else
    reinterpret_cast<sockaddr_in*>(&storage)->sin_port = htons(port);
}

struct Resolver::Lookup {
  SocketLibrary library;
  std::string host;
  std::mutex mutex;
  std::condition_variable finished;
  bool is_finished = false;
  std::vector<SocketAddress> addresses;
  int error = 0;
};

Resolver::Resolver() = default;
Resolver::~Resolver() = default;

ResolveResult Resolver::Resolve(const std::string& host, std::chrono::milliseconds time,
                                std::vector<SocketAddress>& addresses, std::string& problem) {
  int error = 0;
  addresses = LookUp(host, AI_NUMERICHOST, error);  // asks nobody, so it cannot take long
  if (!addresses.empty()) return ResolveResult::kResolved;
  if (!pending_ || pending_->host != host) {
    pending_ = std::make_shared<Lookup>();
    pending_->host = host;
    // The thread shares the look-up's state and refers to nothing else, so that it may outlive this
    // object and the wait below.
    std::thread([lookup = pending_] {
      int result = 0;
      std::vector<SocketAddress> found = LookUp(lookup->host, AI_ADDRCONFIG, result);
      if (found.empty()) {
        found = LookUp(lookup->host, 0, result);  // a machine whose only address is the loopback's
      }
      const std::lock_guard lock(lookup->mutex);
      lookup->addresses = std::move(found);
      lookup->error = result;
      lookup->is_finished = true;
      lookup->finished.notify_all();
    }).detach();
  }
  std::unique_lock lock(pending_->mutex);
  if (!pending_->finished.wait_for(lock, time, [this] { return pending_->is_finished; })) {
    problem = "no answer";
    return ResolveResult::kTimedOut;
  }
  addresses = std::move(pending_->addresses);
  if (addresses.empty()) problem = ResolverErrorText(pending_->error);
  lock.unlock();
  pending_.reset();
  return addresses.empty() ? ResolveResult::kUnknown : ResolveResult::kResolved;
}

}  // namespace pxscheduler
