#include "platform/dates/picture.h"

#include <algorithm>
#include <cstddef>

#include "text/text.h"

namespace pxscheduler {
namespace {

constexpr std::size_t kUsualLength = 32;

void AppendLiteral(std::vector<PictureItem>& items, wchar_t character) {
  if (items.empty() || items.back().letter != 0) items.emplace_back();
  items.back().text += character;
}

// Where a quoted text that begins at `begin` (after its mark) ends, having been copied.
std::size_t CopyQuoted(std::wstring_view picture, std::size_t begin,
                       std::vector<PictureItem>& items) {
  for (std::size_t i = begin; i < picture.size(); ++i) {
    if (picture[i] != L'\'') {
      AppendLiteral(items, picture[i]);
    } else if (i + 1 < picture.size() && picture[i + 1] == L'\'') {
      AppendLiteral(items, L'\'');
      ++i;
    } else {
      return i + 1;
    }
  }
  return picture.size();
}

bool NamesDay(const PictureItem& item) { return item.letter == L'd' && item.text.size() <= 2; }

void AppendYear(std::wstring& out, int year, std::size_t width) {
  const auto number = static_cast<unsigned>(year);
  if (width <= 2)
    AppendWholeNumber(number % 100, out, width);
  else
    AppendWholeNumber(number, out, 4);
}

}  // namespace

std::vector<PictureItem> ParsePicture(std::wstring_view picture, std::wstring_view letters) {
  std::vector<PictureItem> items;
  std::size_t i = 0;
  while (i < picture.size()) {
    const wchar_t c = picture[i];
    if (c == L'\'') {
      i = CopyQuoted(picture, i + 1, items);
    } else if (letters.find(c) != std::wstring_view::npos) {
      const std::size_t end = std::min(picture.find_first_not_of(c, i), picture.size());
      items.push_back({c, std::wstring(picture.substr(i, end - i))});
      i = end;
    } else {
      AppendLiteral(items, c);
      ++i;
    }
  }
  return items;
}

bool NeedsNames(const std::vector<PictureItem>& picture) {
  return std::any_of(picture.begin(), picture.end(), [](const PictureItem& item) {
    return (item.letter == L'd' || item.letter == L'M') && item.text.size() >= 3;
  });
}

std::wstring WriteDate(const std::vector<PictureItem>& picture, std::chrono::sys_days date,
                       const CalendarNames& names) {
  const std::chrono::year_month_day day{date};
  const unsigned month = static_cast<unsigned>(day.month());
  std::wstring out;
  out.reserve(kUsualLength);
  for (const PictureItem& item : picture) {
    const std::size_t width = item.text.size();
    if (item.letter == 0) {
      out += item.text;
    } else if (item.letter == L'y') {
      AppendYear(out, static_cast<int>(day.year()), width);
    } else if (item.letter == L'd') {
      if (width <= 2) {
        AppendWholeNumber(static_cast<unsigned>(day.day()), out, width);
      } else {
        const unsigned weekday = std::chrono::weekday{date}.c_encoding();
        out += (width == 3 ? names.short_weekdays : names.weekdays)[weekday];
      }
    } else if (width <= 2) {
      AppendWholeNumber(month, out, width);
    } else if (width == 3) {
      out += names.short_months[month - 1];
    } else {
      const bool beside_day = std::any_of(picture.begin(), picture.end(), NamesDay);
      out += (beside_day ? names.months_of_dates : names.months)[month - 1];
    }
  }
  return out;
}

std::wstring WriteTime(const std::vector<PictureItem>& picture, std::chrono::seconds time_of_day,
                       const std::wstring& morning, const std::wstring& afternoon) {
  const std::chrono::hh_mm_ss time{time_of_day};
  const auto hour = static_cast<unsigned>(time.hours().count());
  const std::wstring& designator = hour < 12 ? morning : afternoon;
  std::wstring out;
  out.reserve(kUsualLength);
  for (const PictureItem& item : picture) {
    const std::size_t width = std::min<std::size_t>(item.text.size(), 2);
    switch (item.letter) {
      case L'h':
        AppendWholeNumber(hour % 12 == 0 ? 12 : hour % 12, out, width);
        break;
      case L'H':
        AppendWholeNumber(hour, out, width);
        break;
      case L'm':
        AppendWholeNumber(static_cast<unsigned>(time.minutes().count()), out, width);
        break;
      case L's':
        AppendWholeNumber(static_cast<unsigned>(time.seconds().count()), out, width);
        break;
      case L't':
        out += width == 1 ? designator.substr(0, 1) : designator;
        break;
      default:
        out += item.text;
    }
  }
  return out;
}

}  // namespace pxscheduler
