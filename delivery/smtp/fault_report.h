#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <string_view>

#include "delivery/smtp/send_outcome.h"
#include "platform/system.h"

namespace pxscheduler {

// Tells an operator (System::Warn) why messages fail, each cause once a run.
class FaultReport {
 public:
  explicit FaultReport(System& system) : system_(system) {}

  // `recipient` and `server` as an operator knows them, in UTF-8.
  void Tell(const Fault& fault, std::string_view recipient, std::string_view server);
  // The same for every message from this recipient on.
  void TellOfStandingFault(const Fault& fault, std::string_view recipient);
  void TellOfShownPassword(std::string_view server);

 private:
  System& system_;
  std::set<std::string> told_;
  bool standing_fault_is_told_ = false;
  bool shown_password_is_told_ = false;
};

}  // namespace pxscheduler
