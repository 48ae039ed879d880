#include "delivery/smtp/fault_report.h"

#include <algorithm>
#include <utility>

#include "text/utf8.h"

namespace pxscheduler {

namespace {

constexpr std::size_t kMostCauses = 50;

// The words without what differs from message to message: the recipient, and every word with a
// digit but the reply code, which begins a quotation, and the enhanced status code (RFC 3463).
std::string CauseOf(std::string_view words, std::string_view recipient) {
  std::string cause;
  for (std::size_t begin = 0; begin < words.size();) {
    const std::size_t end = std::min(words.find(' ', begin), words.size());
    const std::string_view word = words.substr(begin, end - begin);
    const bool is_code = word.starts_with('"') || std::ranges::count(word, '.') == 2;
    const bool differs = word.find_first_of("0123456789") != std::string_view::npos && !is_code;
    if (!differs && (recipient.empty() || word.find(recipient) == std::string_view::npos))
      cause.append(word).append(" ");
    begin = end + 1;
  }
  return cause;
}

}  // namespace

void FaultReport::Tell(const Fault& fault, std::string_view recipient, std::string_view server) {
  if (fault.words.empty() || told_.size() > kMostCauses) return;
  if (!told_.insert(CauseOf(fault.words, recipient)).second) return;
  std::string line = "Mail to " + std::string(recipient) + " by ";
  line.append(server).append(": ").append(fault.words).append(".");
  if (told_.size() > kMostCauses) line += " Further reasons are not told.";
  system_.Warn(FromUtf8(line));
}

void FaultReport::TellOfStandingFault(const Fault& fault, std::string_view recipient) {
  if (std::exchange(standing_fault_is_told_, true)) return;
  std::string line = "The mail server failed three times in a row";
  if (!fault.words.empty()) line.append(" (").append(fault.words).append(")");
  line += ". It is not tried again: from " + std::string(recipient) + " on every message fails.";
  system_.Warn(FromUtf8(line));
}

void FaultReport::TellOfShownPassword(std::string_view server) {
  if (std::exchange(shown_password_is_told_, true)) return;
  system_.Warn(FromUtf8("The mail password went in the clear to " + std::string(server) +
                        ", which offers no TLS. It is sent because the address is a private one; "
                        "\"EmailSecurity\" \"required\" prevents that."));
}

}  // namespace pxscheduler
