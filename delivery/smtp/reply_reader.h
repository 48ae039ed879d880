#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "delivery/mime/byte_buffer.h"
#include "network/transport.h"

namespace pxscheduler {

// One reply of an SMTP server (RFC 5321 section 4.2).
struct Reply {
  int code = 0;  // 200 to 599
  // What follows the code on each line; what cannot be printed is shown as "?".
  std::vector<std::string> lines;

  bool IsPositive() const { return code / 100 == 2; }
  bool IsIntermediate() const { return code / 100 == 3; }
  bool IsRefusal() const { return code / 100 >= 4; }
};

enum class ReadResult { kReply, kTimedOut, kBroken, kNotSmtp };

// Reads replies from a transport. What arrives behind a reply stays for the next one, so replies to
// commands that went out together come from one read.
class ReplyReader {
 public:
  static constexpr std::size_t kLongestLine = 4096;
  static constexpr std::size_t kMostLines = 256;
  static constexpr std::size_t kMostBytes = 65536;  // of one reply

  // Sets `reply` on kReply. kNotSmtp is a reply out of form or out of bounds.
  ReadResult Read(Transport& transport, Deadline deadline, Reply& reply);

  // Forgets what arrived behind the last reply.
  void Discard();

 private:
  // The next line without its line break, a view into the buffer.
  ReadResult ReadLine(Transport& transport, Deadline deadline, std::string_view& line);

  ByteBuffer buffer_;
  std::size_t begin_ = 0;  // of what is not yet read
};

}  // namespace pxscheduler
