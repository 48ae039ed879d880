#include "platform/letter_case.h"

#include <unicode/uchar.h>

#include <algorithm>

namespace pxscheduler {
namespace {

static_assert(sizeof(wchar_t) == sizeof(UChar32));

wchar_t UpperLetter(wchar_t letter) {
  if (letter < 0x80) return letter >= L'a' && letter <= L'z' ? letter - 0x20 : letter;
  return static_cast<wchar_t>(u_toupper(static_cast<UChar32>(letter)));
}

wchar_t LowerLetter(wchar_t letter) {
  if (letter < 0x80) return letter >= L'A' && letter <= L'Z' ? letter + 0x20 : letter;
  return static_cast<wchar_t>(u_tolower(static_cast<UChar32>(letter)));
}

// `map` is an argument of the template so that it is compiled into the loop.
template <wchar_t (*map)(wchar_t)>
std::wstring Mapped(std::wstring_view text) {
  std::wstring mapped(text.size(), L'\0');
  std::transform(text.begin(), text.end(), mapped.begin(),
                 [](wchar_t letter) { return map(letter); });
  return mapped;
}

}  // namespace

std::wstring UpperCase(std::wstring_view text) { return Mapped<UpperLetter>(text); }

std::wstring LowerCase(std::wstring_view text) { return Mapped<LowerLetter>(text); }

}  // namespace pxscheduler
