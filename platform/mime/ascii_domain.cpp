#include "platform/mime/ascii_domain.h"

#include <unicode/uidna.h>

#include <algorithm>
#include <array>
#include <memory>

#include "platform/code_page.h"

namespace pxscheduler {

namespace {

constexpr std::size_t kLongestLabel = 63;
constexpr std::size_t kLongestDomain = 253;

bool IsLabelCharacter(char character) {
  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
         (character >= '0' && character <= '9') || character == '-' || character == '_';
}

bool IsLabel(std::string_view label) {
  return !label.empty() && label.size() <= kLongestLabel && label.front() != '-' &&
         label.back() != '-' && std::all_of(label.begin(), label.end(), IsLabelCharacter);
}

bool IsDomain(std::string_view domain) {
  if (domain.size() > kLongestDomain) {
    return false;
  }
  for (std::size_t start = 0;;) {
    const std::size_t dot = domain.find('.', start);
    if (!IsLabel(domain.substr(start, dot - start))) {
      return false;
    }
    if (dot == std::string_view::npos) {
      return true;
    }
    start = dot + 1;
  }
}

std::optional<std::string> ConvertDomain(std::wstring_view domain) {
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<UIDNA, decltype(&uidna_close)> idna(
      uidna_openUTS46(UIDNA_CHECK_BIDI | UIDNA_CHECK_CONTEXTJ | UIDNA_NONTRANSITIONAL_TO_ASCII,
                      &status),
      &uidna_close);
  if (U_FAILURE(status) != 0) {
    return std::nullopt;
  }
  const std::string utf8 = ToUtf8(domain);
  std::array<char, kLongestDomain + 2> ascii{};
  UIDNAInfo info = UIDNA_INFO_INITIALIZER;
  const std::int32_t length =
      uidna_nameToASCII_UTF8(idna.get(), utf8.data(), static_cast<std::int32_t>(utf8.size()),
                             ascii.data(), static_cast<std::int32_t>(ascii.size()), &info, &status);
  if (U_FAILURE(status) != 0 || info.errors != 0) {
    return std::nullopt;
  }
  return std::string(ascii.data(), static_cast<std::size_t>(length));
}

}  // namespace

std::optional<std::string> AsciiDomain(std::wstring_view domain) {
  const bool is_ascii = std::all_of(domain.begin(), domain.end(),
                                    [](wchar_t unit) { return unit > 0 && unit < 0x80; });
  const std::optional<std::string> ascii =
      is_ascii ? std::string(domain.begin(), domain.end()) : ConvertDomain(domain);
  return ascii && IsDomain(*ascii) ? ascii : std::nullopt;
}

}  // namespace pxscheduler
