#pragma once

#include <string>

namespace pxscheduler {

enum class AddressScope {
  kThisMachine,  // 127.0.0.0/8, ::1
  kPrivate,      // RFC 1918, unique local (RFC 4193) and link-local addresses
  kPublic,       // all others, and what is no address
};

// How far what is sent to a numeric address may travel. An IPv4 address inside of an IPv6 one
// ("::ffff:10.0.0.1") counts as that.
AddressScope ScopeOf(const std::string& address);

}  // namespace pxscheduler
