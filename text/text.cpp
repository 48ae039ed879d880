#include "text/text.h"

#include <algorithm>
#include <array>

#include "text/ascii_case.h"

namespace pxscheduler {

std::wstring_view TrimBlanks(std::wstring_view text) {
  const std::size_t first = text.find_first_not_of(L' ');
  if (first == std::wstring_view::npos) return {};
  return text.substr(first, text.find_last_not_of(L' ') - first + 1);
}

std::wstring ReplaceAll(std::wstring_view text, std::wstring_view find,
                        std::wstring_view replacement) {
  std::wstring result;
  std::size_t copied = 0;
  if (!find.empty()) {
    for (std::size_t at = text.find(find); at != std::wstring_view::npos;
         at = text.find(find, copied)) {
      result.append(text, copied, at - copied).append(replacement);
      copied = at + find.size();
    }
  }
  return result.append(text, copied);
}

void AppendWholeNumber(std::int64_t number, std::wstring& text, std::size_t least_digits) {
  std::array<wchar_t, 20> digits;  // of the longest, with its sign
  std::size_t first = digits.size();
  auto rest = static_cast<std::uint64_t>(number);
  if (number < 0) rest = 0 - rest;
  for (; rest > 0 || digits.size() - first < least_digits; rest /= 10)
    digits[--first] = static_cast<wchar_t>(L'0' + rest % 10);
  if (number < 0) digits[--first] = L'-';
  text.append(digits.data() + first, digits.size() - first);
}

bool IsHtmlDocument(std::wstring_view text) {
  const auto holds = [text](std::wstring_view tag) {
    return std::search(text.begin(), text.end(), tag.begin(), tag.end(),
                       [](wchar_t a, wchar_t b) { return LowerAscii(a) == b; }) != text.end();
  };
  return holds(L"</html>") && holds(L"<html>");
}

}  // namespace pxscheduler
