#pragma once

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

#include "platform/dates/regional_settings.h"

namespace pxscheduler {

// One stretch of a picture: a run of one picture letter, or text that is copied.
struct PictureItem {
  wchar_t letter = 0;  // 0: `text` is copied, its quotes removed
  std::wstring text;   // the run of letters otherwise
};

// Takes a picture apart. `letters` are those that mean something in this kind of picture: "dMy" in
// dates, "hHmst" in times. A quotation mark inside quoted text is written twice; a closing mark
// that is missing is understood at the end.
std::vector<PictureItem> ParsePicture(std::wstring_view picture, std::wstring_view letters);

inline constexpr std::wstring_view kDateLetters = L"dMy";
inline constexpr std::wstring_view kTimeLetters = L"hHmst";

// Whether the picture holds a name of the calendar.
bool NeedsNames(const std::vector<PictureItem>& picture);

// `names` is looked at only where the picture holds a name.
std::wstring WriteDate(const std::vector<PictureItem>& picture, std::chrono::sys_days date,
                       const CalendarNames& names);

// `time_of_day` is 0 to 86,399 seconds.
std::wstring WriteTime(const std::vector<PictureItem>& picture, std::chrono::seconds time_of_day,
                       const std::wstring& morning, const std::wstring& afternoon);

}  // namespace pxscheduler
