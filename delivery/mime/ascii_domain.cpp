#include "delivery/mime/ascii_domain.h"

#include <algorithm>

#include "delivery/mime/ascii_characters.h"
#include "platform/idna.h"

namespace pxscheduler {

namespace {

constexpr std::size_t kLongestLabel = 63;
constexpr std::size_t kLongestDomain = 253;

bool IsLabelCharacter(char character) {
  return IsAsciiAlphanumeric(character) || character == '-' || character == '_';
}

bool IsLabel(std::string_view label) {
  return !label.empty() && label.size() <= kLongestLabel && label.front() != '-' &&
         label.back() != '-' && std::all_of(label.begin(), label.end(), IsLabelCharacter);
}

bool IsDomain(std::string_view domain) {
  if (domain.size() > kLongestDomain) return false;
  for (std::size_t start = 0;;) {
    const std::size_t dot = domain.find('.', start);
    if (!IsLabel(domain.substr(start, dot - start))) return false;
    if (dot == std::string_view::npos) return true;
    start = dot + 1;
  }
}

}  // namespace

std::optional<std::string> AsciiDomain(std::wstring_view domain) {
  const bool is_ascii = std::all_of(domain.begin(), domain.end(),
                                    [](wchar_t unit) { return unit > 0 && unit < 0x80; });
  const std::optional<std::string> ascii =
      is_ascii ? std::string(domain.begin(), domain.end()) : IdnaToAscii(domain);
  return ascii && IsDomain(*ascii) ? ascii : std::nullopt;
}

}  // namespace pxscheduler
