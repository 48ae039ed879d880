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
  // The text behind the code on each line, with "?" for what is not printable ASCII.
  std::vector<std::string> lines;

  bool IsPositive() const { return code / 100 == 2; }
  bool IsIntermediate() const { return code / 100 == 3; }
  bool IsRefusal() const { return code / 100 >= 4; }
  bool IsClosing() const { return code == 421; }  // the server closes the connection
};

enum class ReadResult { kReply, kTimedOut, kBroken, kNotSmtp };

// Reads replies from a transport. What arrives behind a reply is kept for the next one, so that one
// read can bring the replies to several commands.
class ReplyReader {
 public:
  static constexpr std::size_t kLongestLine = 4096;
  static constexpr std::size_t kMostLines = 256;
  static constexpr std::size_t kMostBytes = 65536;  // of one reply

  // Sets `reply` on kReply. Returns kNotSmtp for a malformed reply and for one that is too long.
  ReadResult Read(Transport& transport, Deadline deadline, Reply& reply);

  // Drops what arrived behind the last reply.
  void Discard();

 private:
  // Sets `line` to the next line without its line break, a view into the buffer.
  ReadResult ReadLine(Transport& transport, Deadline deadline, std::string_view& line);

  ByteBuffer buffer_;
  std::size_t begin_ = 0;  // of what is not yet read
};

}  // namespace pxscheduler
