#include "query/sql_literals.h"

#include <optional>

#include "config/helper_library.h"
#include "platform/letter_case.h"
#include "text/text.h"

namespace pxscheduler {
namespace {

constexpr std::size_t kLongestDateAlone = 12;

std::wstring WithLeadingZeros(int number, std::size_t width) {
  std::wstring digits = std::to_wstring(number);
  return digits.size() < width ? std::wstring(width - digits.size(), L'0') + digits : digits;
}

std::wstring YearMonthDay(const Regional& regional, const std::wstring& text) {
  const std::optional<DateTime> value = regional.ReadDate(text);
  if (!value) return text;
  const std::chrono::year_month_day date{value->date};
  return WithLeadingZeros(static_cast<int>(date.year()), 4) + L"-" +
         WithLeadingZeros(static_cast<int>(static_cast<unsigned>(date.month())), 2) + L"-" +
         WithLeadingZeros(static_cast<int>(static_cast<unsigned>(date.day())), 2);
}

std::wstring ShortTimeWithoutBlanks(const Regional& regional, const CodePage& ansi,
                                    const std::wstring& text) {
  const std::optional<DateTime> value = regional.ReadDate(text);
  std::wstring time = UpperCase(value ? regional.ShortTime(value->time_of_day) : text);
  time = Stuff(ansi, time, L"A.M.", L"AM");
  time = Stuff(ansi, time, L"P.M.", L"PM");
  return Stuff(ansi, time, L" ", L"");
}

// "12:00N" (noon) and "12:00M" (midnight) with the marks that dates are read with.
void ReadNoonAndMidnightMarks(std::wstring& text) {
  if (text.ends_with(L'N')) text.back() = L'P';
  if (text.ends_with(L'M') && !text.ends_with(L"PM") && !text.ends_with(L"AM")) text.back() = L'A';
}

}  // namespace

std::wstring FormatSqlDate(const Regional& regional, const CodePage& ansi,
                           const std::wstring& value) {
  std::wstring text{TrimBlanks(Stuff(ansi, value, L"'", L""))};
  if (text.ends_with(L':')) {
    text.pop_back();
    text = std::wstring{TrimBlanks(text)};
  }
  const bool is_bare_time = text.size() >= 3 && text[2] == L':';
  if (text.empty() || text == L":" || text == L"Null" || is_bare_time) return L"Null";

  std::wstring time;
  if (text.size() > kLongestDateAlone) {
    ReadNoonAndMidnightMarks(text);
    time = ShortTimeWithoutBlanks(regional, ansi, text);
  }
  std::wstring literal = YearMonthDay(regional, text);
  if (!time.empty()) literal += L" " + time;
  return L"'" + literal + L"'";
}

std::wstring StripTrailing(std::wstring text, std::wstring_view suffix) {
  while (text.ends_with(suffix)) text.resize(text.size() - suffix.size());
  return text;
}

}  // namespace pxscheduler
