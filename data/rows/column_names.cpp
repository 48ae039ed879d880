#include "data/rows/column_names.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "platform/letter_case.h"

namespace pxscheduler {
namespace {

constexpr wchar_t kFirstBeyondAscii = 0x80;

wchar_t LowerAscii(wchar_t character) {
  return character >= L'A' && character <= L'Z' ? static_cast<wchar_t>(character - L'A' + L'a')
                                                : character;
}

// Of the length and the first and the last letter, which differ enough among the few names of a
// result set. All characters beyond ASCII hash alike, since one may be the other case of another.
std::size_t Hash(std::wstring_view name) {
  if (name.empty()) return 0;
  const auto letter = [](wchar_t character) {
    return character < kFirstBeyondAscii ? static_cast<std::size_t>(LowerAscii(character)) : 0U;
  };
  return (name.size() * 31 + letter(name.front())) * 31 + letter(name.back());
}

bool EqualWithoutCase(std::wstring_view left, std::wstring_view right) {
  if (left == right) return true;
  if (left.size() != right.size()) return false;
  const auto [in_left, in_right] =
      std::mismatch(left.begin(), left.end(), right.begin(),
                    [](wchar_t a, wchar_t b) { return LowerAscii(a) == LowerAscii(b); });
  if (in_left == left.end()) return true;
  const bool are_ascii = *in_left < kFirstBeyondAscii && *in_right < kFirstBeyondAscii;
  return !are_ascii && LowerCase(left) == LowerCase(right);
}

}  // namespace

ColumnNames::ColumnNames(std::vector<std::wstring> names)
    : names_{std::move(names)}, slots_(std::bit_ceil(2 * names_.size() + 1), 0) {
  for (std::size_t column = 0; column < names_.size(); ++column) {
    if (Find(names_[column])) continue;
    std::size_t slot = Hash(names_[column]) & (slots_.size() - 1);
    while (slots_[slot] != 0) slot = (slot + 1) & (slots_.size() - 1);
    slots_[slot] = static_cast<std::uint32_t>(column + 1);
  }
}

std::optional<std::size_t> ColumnNames::Find(std::wstring_view name) const {
  if (slots_.empty()) return std::nullopt;
  std::size_t slot = Hash(name) & (slots_.size() - 1);
  for (; slots_[slot] != 0; slot = (slot + 1) & (slots_.size() - 1)) {
    const std::size_t column = slots_[slot] - 1;
    if (EqualWithoutCase(names_[column], name)) return column;
  }
  return std::nullopt;
}

}  // namespace pxscheduler
