#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace pxscheduler {

// What became of a message, or why it was not sent. The values are the result codes of a send.
enum class SendOutcome : std::int32_t {
  kDelivered = 0,
  kOtherError = 1,
  kOutOfMemory = 3,
  kMessageRefused = 4,  // DATA, the message itself or its size
  kHelloRefused = 5,    // EHLO and HELO
  kSenderRefused = 7,   // by the server, or malformed; so too the recipient
  kRecipientRefused = 8,
  kConnectionRefused = 9,
  kNoServer = 15,          // none is configured
  kConnectionFailed = 16,  // it broke, or TLS could not be started
  kNameUnknown = 17,
  kNotSmtp = 18,  // no greeting, or a malformed or unexpected reply
  kNameTimedOut = 21,
  kConnectTimedOut = 22,
  kCredentialsRefused = 24,
  kNoMechanism = 25,             // of authentication that the server offers and this client knows
  kAuthenticationProtocol = 26,  // violated by the server
  kReplyTimedOut = 27,
};

// What ended a delivery, and why.
struct Fault {
  // NOLINTNEXTLINE(google-explicit-constructor): an outcome is a fault of which nobody said more
  Fault(SendOutcome fault_outcome, std::string fault_words = {})
      : outcome(fault_outcome), words(std::move(fault_words)) {}

  SendOutcome outcome;
  // For an operator, in UTF-8: what was being done, and the words of the server, of TLS or of the
  // resolver for what came of it; never a credential. "" where it has been told already.
  std::string words;

  friend bool operator==(const Fault& fault, SendOutcome outcome) {
    return fault.outcome == outcome;
  }
};

// Why a step failed; nothing where it succeeded.
using Failure = std::optional<Fault>;

}  // namespace pxscheduler
