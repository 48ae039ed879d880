#include "platform/letter_case.h"

#include <windows.h>

#include <algorithm>

namespace pxscheduler {
namespace {

// Linguistic casing would depend on the user's language; the file system's does not.
std::wstring Mapped(std::wstring_view text, DWORD direction) {
  std::wstring mapped(text);
  if (text.empty()) return mapped;
  const auto size = static_cast<int>(text.size());
  ::LCMapStringEx(LOCALE_NAME_INVARIANT, direction, text.data(), size, mapped.data(), size, nullptr,
                  nullptr, 0);
  return mapped;
}

bool IsAscii(std::wstring_view text) {
  return std::all_of(text.begin(), text.end(), [](wchar_t letter) { return letter < 0x80; });
}

// Without a call of the system, because field names are compared row by row.
template <wchar_t First, wchar_t Last, int Distance>
std::wstring Shifted(std::wstring_view text) {
  std::wstring shifted(text);
  for (wchar_t& letter : shifted)
    if (letter >= First && letter <= Last) letter = static_cast<wchar_t>(letter + Distance);
  return shifted;
}

}  // namespace

std::wstring UpperCase(std::wstring_view text) {
  return IsAscii(text) ? Shifted<L'a', L'z', -0x20>(text) : Mapped(text, LCMAP_UPPERCASE);
}

std::wstring LowerCase(std::wstring_view text) {
  return IsAscii(text) ? Shifted<L'A', L'Z', 0x20>(text) : Mapped(text, LCMAP_LOWERCASE);
}

}  // namespace pxscheduler
