#include "delivery/mime/address.h"

#include <algorithm>
#include <string>
#include <utility>

#include "delivery/mime/ascii_characters.h"
#include "delivery/mime/ascii_domain.h"
#include "text/text.h"
#include "text/utf8.h"

namespace pxscheduler {

namespace {

constexpr std::size_t kLongestLocalPart =
    128;  // twice the limit of RFC 5321, which is for the server to keep

// A control, an invisible or a direction character, or a separator that some programs take for a
// line break: with it, an address is not the one that it looks like.
bool IsDeceptive(wchar_t unit) {
  const auto code = static_cast<char32_t>(unit);
  const auto is_in = [code](char32_t first, char32_t last) {
    return code >= first && code <= last;
  };
  return code < 0x20 || is_in(0x7F, 0x9F) || code == 0xAD || code == 0x61C || code == 0x180E ||
         is_in(0x200B, 0x200F) || is_in(0x2028, 0x202E) || is_in(0x2060, 0x206F) ||
         code == 0xFEFF || is_in(0xFFF9, 0xFFFB);
}

// RFC 6531 section 3.3.
bool IsInternational(wchar_t unit) { return static_cast<char32_t>(unit) >= 0x80; }

bool IsQuotedString(std::wstring_view text) {
  if (text.size() < 3 || text.front() != L'"' || text.back() != L'"') return false;
  const std::wstring_view content = text.substr(1, text.size() - 2);
  for (std::size_t i = 0; i < content.size(); ++i) {
    const bool escapes = content[i] == L'\\';
    i += escapes ? 1 : 0;
    if (i == content.size() || (!escapes && content[i] == L'"')) return false;
  }
  return true;
}

// In UTF-8, quoted where that is needed. Nothing for a text that cannot be a local part.
std::optional<std::string> LocalPart(std::wstring_view text) {
  if (text.empty() || text.size() > kLongestLocalPart) return std::nullopt;
  if (IsQuotedString(text)) return ToUtf8(text);
  const auto is_allowed = [](wchar_t unit) {
    return unit == L'.' || IsAtomCharacter(unit) || IsInternational(unit);
  };
  if (!std::all_of(text.begin(), text.end(), is_allowed)) return std::nullopt;
  const bool dots_misplaced =
      text.front() == L'.' || text.back() == L'.' || text.find(L"..") != std::wstring_view::npos;
  return dots_misplaced ? '"' + ToUtf8(text) + '"' : ToUtf8(text);
}

// "[192.0.2.1]" or "[IPv6:2001:db8::1]". The server checks the numbers.
bool IsAddressLiteral(std::wstring_view domain) {
  if (domain.size() < 3 || domain.size() > 64 || domain.front() != L'[' || domain.back() != L']')
    return false;
  const std::wstring_view content = domain.substr(1, domain.size() - 2);
  return std::all_of(content.begin(), content.end(), [](wchar_t unit) {
    return IsAsciiAlphanumeric(unit) || unit == L'.' || unit == L':' || unit == L'-';
  });
}

}  // namespace

std::optional<Address> ParseAddress(std::wstring_view text) {
  text = TrimBlanks(text);
  // In a domain, too, where IDNA would drop some of them.
  if (std::any_of(text.begin(), text.end(), IsDeceptive)) return std::nullopt;
  const std::size_t at = text.rfind(L'@');
  if (at == std::wstring_view::npos) return std::nullopt;
  std::optional<std::string> local_part = LocalPart(text.substr(0, at));
  const std::wstring_view domain = text.substr(at + 1);
  std::optional<std::string> ascii_domain =
      IsAddressLiteral(domain) ? std::string(domain.begin(), domain.end()) : AsciiDomain(domain);
  if (!local_part || !ascii_domain) return std::nullopt;
  Address address;
  address.is_ascii = std::all_of(local_part->begin(), local_part->end(),
                                 [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
  address.text = *std::move(local_part) + '@' + *ascii_domain;
  address.domain = *std::move(ascii_domain);
  return address;
}

}  // namespace pxscheduler
