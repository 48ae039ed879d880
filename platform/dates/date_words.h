#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/dates/picture.h"
#include "platform/dates/regional_settings.h"

namespace pxscheduler {

enum class Designator { kNone, kMorning, kAfternoon };

// A word that a date text may hold. One spelling can mean several things: the Spanish "mar" is a
// month and a weekday. A word that means nothing is filler from the locale's own pictures.
struct DateWord {
  std::wstring text;   // in lower case
  unsigned month = 0;  // 1 to 12, 0 where it is none
  bool weekday = false;
  Designator designator = Designator::kNone;
};

// The words of one locale.
class DateWords {
 public:
  DateWords(const CalendarNames& names, const RegionalSettings& settings,
            const std::vector<PictureItem>& short_date, const std::vector<PictureItem>& long_time);

  // The longest word at `position` (0-based) of a text in lower case that does not end inside a
  // run of letters. Null where there is none; owned by this object.
  const DateWord* Longest(std::wstring_view lower_text, std::size_t position) const;

 private:
  DateWord* Add(std::wstring_view spelling);

  std::vector<DateWord> words_;  // longest first
};

// Blanks as people and other programs write them, the no-break spaces included.
inline bool IsBlankCharacter(wchar_t character) {
  return character == L' ' || character == L'\t' || character == 0xA0 || character == 0x202F;
}
inline bool IsDateSeparator(wchar_t character) {
  return character == L'/' || character == L'-' || character == L'.' || character == L',';
}
inline bool IsDigit(wchar_t character) { return character >= L'0' && character <= L'9'; }

}  // namespace pxscheduler
