#include "delivery/smtp/server_settings.h"

#include <algorithm>

#include "delivery/mime/ascii_domain.h"
#include "text/ascii_case.h"
#include "text/text.h"
#include "text/utf8.h"

namespace pxscheduler {

namespace {

constexpr std::int64_t kLongestMilliseconds = 3'600'000;

}  // namespace

Security ReadSecurity(std::wstring_view text) {
  const std::string name = LowerAscii(ToUtf8(TrimBlanks(text)));
  if (name.empty()) return Security::kWhenOffered;
  if (name == "unverified") return Security::kUnverified;
  return name == "none" ? Security::kNone : Security::kRequired;
}

Timeouts Timeouts::AtMost(std::chrono::milliseconds longest) const {
  return {.resolve = std::min(resolve, longest),
          .connect = std::min(connect, longest),
          .handshake = std::min(handshake, longest),
          .reply = std::min(reply, longest),
          .data = std::min(data, longest),
          .acceptance = std::min(acceptance, longest)};
}

Timeouts ReadTimeouts(const System& system) {
  const std::wstring text = system.EnvironmentVariable(L"PXSCHEDULER_SMTP_TIMEOUT_MS");
  std::int64_t milliseconds = 0;
  for (const wchar_t digit : text) {
    if (digit < L'0' || digit > L'9') return {};
    milliseconds = std::min(milliseconds * 10 + (digit - L'0'), kLongestMilliseconds);
  }
  return milliseconds == 0 ? Timeouts()
                           : Timeouts().AtMost(std::chrono::milliseconds(milliseconds));
}

std::string ResolvableHost(std::wstring_view host) {
  const bool is_numeric =
      host.find_first_not_of(L"0123456789abcdefABCDEF.:%") == std::wstring_view::npos;
  if (is_numeric) return {host.begin(), host.end()};
  return AsciiDomain(host).value_or("");
}

}  // namespace pxscheduler
