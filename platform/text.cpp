#include "platform/text.h"

#include <array>
#include <charconv>

#include "platform/letter_case.h"

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

void AppendWholeNumber(std::int64_t number, std::wstring& text) {
  std::array<char, 20> digits;  // of the longest, with its sign
  const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), number);
  for (const char* digit = digits.data(); digit != written.ptr; ++digit) {
    text += static_cast<wchar_t>(*digit);
  }
}

bool IsHtmlDocument(std::wstring_view text) {
  const std::wstring upper = UpperCase(text);
  return upper.find(L"</HTML>") != std::wstring::npos &&
         upper.find(L"<HTML>") != std::wstring::npos;
}

}  // namespace pxscheduler
