#pragma once

#include "delivery/smtp/send_outcome.h"

namespace pxscheduler {

// Counts failures that lie with the server and not with a message. One that comes three times in a
// row would come for every client, and cost each time what it costs to wait for it; a refused login
// would lock the account in the end.
class ServerFaults {
 public:
  // Of an attempt in which the server did not accept the sender.
  void Count(const Fault& fault);
  void Forget() { count_ = 0; }

  // The last of three failures in a row, which is the outcome of every message from now on; else
  // nothing.
  Failure Standing() const;

 private:
  int count_ = 0;
  Failure last_;
};

}  // namespace pxscheduler
