#pragma once

#include <memory>
#include <string>

#include "network/network.h"
#include "network/transport.h"

namespace pxscheduler {

// Network::StartTls by OpenSSL, TLS 1.2 or later, against the system's trust store.
IoResult StartTlsOver(std::unique_ptr<Transport>& transport, const std::string& host,
                      CertificateCheck check, Deadline deadline, std::string& problem);

}  // namespace pxscheduler
