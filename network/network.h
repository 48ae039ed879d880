#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "network/transport.h"

namespace pxscheduler {

enum class ConnectResult {
  kConnected,
  kNameUnknown,
  kNameTimedOut,
  kRefused,  // by every address, or none can be reached
  kTimedOut,
};

struct ConnectTimeouts {
  std::chrono::milliseconds resolve;
  std::chrono::milliseconds connect;        // all addresses of a name together
  std::chrono::milliseconds shortest_step;  // of what is sent and received afterwards
};

enum class CertificateCheck { kNone, kTrustAndHostName };

// The machine's way to other machines.
class Network {
 public:
  virtual ~Network() = default;

  // Connects to a host name or a numeric address (IPv4 or IPv6); the addresses of a name are tried
  // in turn. Sets `transport` when connected, else `problem` to the machine's words for why not.
  virtual ConnectResult Connect(const std::string& host, std::int32_t port,
                                const ConnectTimeouts& timeouts,
                                std::unique_ptr<Transport>& transport, std::string& problem) = 0;

  // Replaces `transport` by a TLS connection over it, in which the server is called `host`. Where
  // it fails nothing but the handshake has left, `transport` is of no more use, and `problem` says
  // why, for instance what is wrong with which certificate.
  virtual IoResult StartTls(std::unique_ptr<Transport>& transport, const std::string& host,
                            CertificateCheck check, Deadline deadline, std::string& problem) = 0;

  // What the machine calls itself; "" where it has no name.
  virtual std::string HostName() const = 0;
};

}  // namespace pxscheduler
