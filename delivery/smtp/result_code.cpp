#include "delivery/smtp/result_code.h"

#include <algorithm>
#include <array>

namespace pxscheduler {

namespace {

struct Entry {
  SendOutcome outcome;
  std::int32_t code;
};

constexpr std::array kCodes = {
    Entry{SendOutcome::kDelivered, 0},
    Entry{SendOutcome::kNoServer, 15},
    Entry{SendOutcome::kNameUnknown, 17},
    Entry{SendOutcome::kNameTimedOut, 21},
    Entry{SendOutcome::kConnectionRefused, 9},
    Entry{SendOutcome::kConnectTimedOut, 22},
    Entry{SendOutcome::kNotSmtp, 18},
    Entry{SendOutcome::kHelloRefused, 5},
    Entry{SendOutcome::kNoMechanism, 25},
    Entry{SendOutcome::kCredentialsRefused, 24},
    Entry{SendOutcome::kAuthenticationProtocol, 26},
    Entry{SendOutcome::kSenderRefused, 7},
    Entry{SendOutcome::kRecipientRefused, 8},
    Entry{SendOutcome::kMessageRefused, 4},
    Entry{SendOutcome::kReplyTimedOut, 27},
    Entry{SendOutcome::kConnectionBroken, 16},
    Entry{SendOutcome::kTlsFailed, 16},
    Entry{SendOutcome::kOutOfMemory, 3},
    Entry{SendOutcome::kOtherError, 1},
};

}  // namespace

std::int32_t ResultCode(SendOutcome outcome) {
  return std::find_if(kCodes.begin(), kCodes.end(),
                      [outcome](const Entry& entry) { return entry.outcome == outcome; })
      ->code;
}

}  // namespace pxscheduler
