#pragma once

#include <memory>

#include "network/network.h"

namespace pxscheduler {

// TCP by the sockets of the operating system, TLS by the library of tls_transport.h.
std::unique_ptr<Network> NewSocketNetwork();

}  // namespace pxscheduler
