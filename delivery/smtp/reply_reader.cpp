#include "delivery/smtp/reply_reader.h"

#include <algorithm>

namespace pxscheduler {

namespace {

constexpr std::size_t kReadSize = 4096;

// 200 to 599, or 0 for a line that does not begin with a reply code.
int CodeOf(std::string_view line) {
  if (line.size() < 3 || line[0] < '2' || line[0] > '5') return 0;
  int code = 0;
  for (const char digit : line.substr(0, 3)) {
    if (digit < '0' || digit > '9') return 0;
    code = code * 10 + (digit - '0');
  }
  const bool separated = line.size() == 3 || line[3] == ' ' || line[3] == '-';
  return separated ? code : 0;
}

std::string Printable(std::string_view bytes) {
  std::string text(bytes);
  std::replace_if(
      text.begin(), text.end(), [](char byte) { return byte < ' ' || byte > '~'; }, '?');
  return text;
}

}  // namespace

ReadResult ReplyReader::Read(Transport& transport, Deadline deadline, Reply& reply) {
  reply.code = 0;
  reply.lines.clear();
  std::size_t bytes = 0;
  while (reply.lines.size() < kMostLines && bytes <= kMostBytes) {
    std::string_view line;
    const ReadResult result = ReadLine(transport, deadline, line);
    if (result != ReadResult::kReply) return result;
    const int code = CodeOf(line);
    if (code == 0 || (reply.code != 0 && code != reply.code)) return ReadResult::kNotSmtp;
    reply.code = code;
    reply.lines.push_back(Printable(line.substr(std::min<std::size_t>(4, line.size()))));
    bytes += line.size();
    if (line.size() == 3 || line[3] == ' ') return ReadResult::kReply;
  }
  return ReadResult::kNotSmtp;
}

void ReplyReader::Discard() {
  buffer_.Clear();
  begin_ = 0;
}

ReadResult ReplyReader::ReadLine(Transport& transport, Deadline deadline, std::string_view& line) {
  std::size_t searched = begin_;
  for (;;) {
    const std::string_view bytes = buffer_.View();
    const std::size_t end = bytes.find('\n', searched);
    if (end != std::string_view::npos) {
      line = bytes.substr(begin_, end - begin_);
      line.remove_suffix(line.ends_with('\r') ? 1 : 0);
      begin_ = end + 1;
      return line.size() <= kLongestLine ? ReadResult::kReply : ReadResult::kNotSmtp;
    }
    buffer_.DropFront(begin_);
    begin_ = 0;
    searched = buffer_.View().size();
    if (searched > kLongestLine) return ReadResult::kNotSmtp;
    char* const free = buffer_.Room(kReadSize);
    std::size_t received;
    const IoResult result = transport.Receive(free, kReadSize, received, deadline);
    if (result == IoResult::kTimedOut) return ReadResult::kTimedOut;
    if (result == IoResult::kBroken) return ReadResult::kBroken;
    buffer_.SetEnd(free + received);
  }
}

}  // namespace pxscheduler
