#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

namespace pxscheduler {

// When a step has to be over. One deadline covers everything that the step waits for.
using Deadline = std::chrono::steady_clock::time_point;

enum class IoResult {
  kDone,
  kTimedOut,  // the deadline passed
  kBroken,    // the other side closed the connection, or the connection failed
};

// A connected stream of bytes. After anything but kDone it is of no more use.
class Transport {
 public:
  virtual ~Transport() = default;

  // Sends all the bytes. Where it fails, any number of them may have left.
  virtual IoResult Send(std::string_view bytes, Deadline deadline) = 0;
  // Waits for at least one byte and hands out at most `size`; sets `received` to how many, 0 where
  // it fails.
  virtual IoResult Receive(char* bytes, std::size_t size, std::size_t& received,
                           Deadline deadline) = 0;
  // This side's numeric address: "192.0.2.1", "2001:db8::1". "" where it is not known.
  virtual std::string LocalAddress() const = 0;
  // The other side's, in the same form.
  virtual std::string PeerAddress() const = 0;
};

}  // namespace pxscheduler
