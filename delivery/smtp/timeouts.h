#pragma once

#include <chrono>

#include "platform/system.h"

namespace pxscheduler {

// How long each step of a delivery may take. Shorter than RFC 5321 section 4.5.3.2 asks of a relay
// that can wait, and long enough for a server that makes strangers wait on purpose. The last one is
// the longest: a message that was accepted after this side gave up counts as failed.
struct Timeouts {
  std::chrono::milliseconds resolve{20'000};
  std::chrono::milliseconds connect{30'000};  // all addresses of a name together
  std::chrono::milliseconds handshake{30'000};
  std::chrono::milliseconds reply{60'000};
  std::chrono::milliseconds data{120'000};        // to hand over one message
  std::chrono::milliseconds acceptance{300'000};  // the reply after the message

  // The same, with no step longer than `longest`.
  Timeouts AtMost(std::chrono::milliseconds longest) const;
};

// The times above, or, where the environment variable PXSCHEDULER_SMTP_TIMEOUT_MS holds a number of
// milliseconds, none longer than that.
Timeouts TimeoutsOf(const System& system);

}  // namespace pxscheduler
