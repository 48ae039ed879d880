#include "delivery/smtp/timeouts.h"

#include <algorithm>
#include <cstdint>
#include <string>

namespace pxscheduler {

namespace {

constexpr std::int64_t kLongestMilliseconds = 3'600'000;

}  // namespace

Timeouts Timeouts::AtMost(std::chrono::milliseconds longest) const {
  return {.resolve = std::min(resolve, longest),
          .connect = std::min(connect, longest),
          .handshake = std::min(handshake, longest),
          .reply = std::min(reply, longest),
          .data = std::min(data, longest),
          .acceptance = std::min(acceptance, longest)};
}

Timeouts TimeoutsOf(const System& system) {
  const std::wstring text = system.EnvironmentVariable(L"PXSCHEDULER_SMTP_TIMEOUT_MS");
  std::int64_t milliseconds = 0;
  for (const wchar_t digit : text) {
    if (digit < L'0' || digit > L'9') return {};
    milliseconds = std::min(milliseconds * 10 + (digit - L'0'), kLongestMilliseconds);
  }
  return milliseconds == 0 ? Timeouts()
                           : Timeouts().AtMost(std::chrono::milliseconds(milliseconds));
}

}  // namespace pxscheduler
