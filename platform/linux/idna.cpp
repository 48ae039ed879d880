#include "platform/idna.h"

#include <unicode/uidna.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "text/utf8.h"

namespace pxscheduler {

std::optional<std::string> IdnaToAscii(std::wstring_view domain) {
  constexpr std::size_t kLongestDomain = 253;
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<UIDNA, decltype(&uidna_close)> idna(
      uidna_openUTS46(UIDNA_CHECK_BIDI | UIDNA_CHECK_CONTEXTJ | UIDNA_NONTRANSITIONAL_TO_ASCII,
                      &status),
      &uidna_close);
  if (U_FAILURE(status) != 0) return std::nullopt;
  const std::string utf8 = ToUtf8(domain);
  std::array<char, kLongestDomain + 2> ascii{};
  UIDNAInfo info = UIDNA_INFO_INITIALIZER;
  const std::int32_t length =
      uidna_nameToASCII_UTF8(idna.get(), utf8.data(), static_cast<std::int32_t>(utf8.size()),
                             ascii.data(), static_cast<std::int32_t>(ascii.size()), &info, &status);
  if (U_FAILURE(status) != 0 || info.errors != 0) return std::nullopt;
  return std::string(ascii.data(), static_cast<std::size_t>(length));
}

}  // namespace pxscheduler
