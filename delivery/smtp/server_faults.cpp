#include "delivery/smtp/server_faults.h"

namespace pxscheduler {

namespace {

constexpr int kMostInARow = 3;

bool LiesWithServer(SendOutcome outcome) {
  switch (outcome) {
    case SendOutcome::kHelloRefused:
    case SendOutcome::kConnectionRefused:
    case SendOutcome::kNoServer:
    case SendOutcome::kConnectionFailed:
    case SendOutcome::kNameUnknown:
    case SendOutcome::kNotSmtp:
    case SendOutcome::kNameTimedOut:
    case SendOutcome::kConnectTimedOut:
    case SendOutcome::kCredentialsRefused:
    case SendOutcome::kNoMechanism:
    case SendOutcome::kAuthenticationProtocol:
    case SendOutcome::kReplyTimedOut:
      return true;
    case SendOutcome::kDelivered:
    case SendOutcome::kOtherError:
    case SendOutcome::kOutOfMemory:
    case SendOutcome::kMessageRefused:
    case SendOutcome::kSenderRefused:
    case SendOutcome::kRecipientRefused:
      break;
  }
  return false;
}

}  // namespace

void ServerFaults::Count(const Fault& fault) {
  if (!LiesWithServer(fault.outcome)) return;
  ++count_;
  last_ = fault;
}

Failure ServerFaults::Standing() const { return count_ < kMostInARow ? std::nullopt : last_; }

}  // namespace pxscheduler
