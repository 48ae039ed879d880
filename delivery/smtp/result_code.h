#pragma once

#include <cstdint>

namespace pxscheduler {

// What became of a message, or what kept it from being sent.
enum class SendOutcome {
  kDelivered,
  kNoServer,  // none is configured
  kNameUnknown,
  kNameTimedOut,
  kConnectionRefused,
  kConnectTimedOut,
  kNotSmtp,       // no greeting, or a reply out of form
  kHelloRefused,  // EHLO and HELO
  kNoMechanism,   // authentication that this side and the server have in common
  kCredentialsRefused,
  kAuthenticationProtocol,
  kSenderRefused,     // by the server, or malformed
  kRecipientRefused,  // by the server, or malformed
  kMessageRefused,    // DATA, the message itself or its size
  kReplyTimedOut,
  kConnectionBroken,
  kTlsFailed,
  kOutOfMemory,
  kOtherError,
};

// The code that a send returns for it: 0 when delivered.
std::int32_t ResultCode(SendOutcome outcome);

}  // namespace pxscheduler
