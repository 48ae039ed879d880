#pragma once

#include <windows.h>
// Needs the types of the header above.
#include <wincrypt.h>

#include <optional>
#include <string>

#include "network/transport.h"

namespace pxscheduler {

// Whether a host is written as an address of IPv4 or IPv6 and not as a name. The caller holds a
// SocketLibrary.
bool IsNumericHost(const std::string& host);

// Nothing where the machine's certificate stores trust a TLS server's certificate, which came with
// those in its store, and it was made out to `host`, an ASCII name or a numeric address; else why
// not. Looking for certificates that are missing between them ends at the deadline.
std::optional<std::string> ReasonOfDistrust(const CERT_CONTEXT& certificate,
                                            const std::string& host, Deadline deadline);

}  // namespace pxscheduler
