#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "delivery/smtp/reply_reader.h"

namespace pxscheduler {

// The extensions that a server offers in its reply to EHLO, as far as this client uses them.
struct ServerExtensions {
  bool pipelining = false;              // RFC 2920
  bool eight_bit = false;               // RFC 6152
  bool international = false;           // SMTPUTF8, RFC 6531
  bool start_tls = false;               // RFC 3207
  bool size = false;                    // RFC 1870
  std::uint64_t largest_message = 0;    // bytes; 0: no limit is known
  std::vector<std::string> mechanisms;  // of AUTH (RFC 4954), in lower case

  // Compared without case.
  bool Offers(std::string_view mechanism) const;
};

ServerExtensions ReadExtensions(const Reply& hello);

}  // namespace pxscheduler
