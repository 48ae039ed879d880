#include "platform/idna.h"

#include <windows.h>

#include <array>
#include <cstddef>

namespace pxscheduler {

// What the system's own conversion makes of it (IDNA 2003, unassigned code points refused).
std::optional<std::string> IdnaToAscii(std::wstring_view domain) {
  std::array<wchar_t, 256> ascii{};
  if (domain.size() >= ascii.size()) return std::nullopt;
  const int length = ::IdnToAscii(0, domain.data(), static_cast<int>(domain.size()), ascii.data(),
                                  static_cast<int>(ascii.size()));
  if (length <= 0) return std::nullopt;
  std::string narrow;
  for (int i = 0; i < length; ++i) narrow += static_cast<char>(ascii[static_cast<std::size_t>(i)]);
  return narrow;
}

}  // namespace pxscheduler
