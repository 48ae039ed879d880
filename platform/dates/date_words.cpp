#include "platform/dates/date_words.h"

#include <algorithm>
#include <array>

#include "platform/letter_case.h"

namespace pxscheduler {
namespace {

// Whether two characters side by side would be read as one word. Ideographs stand alone.
bool ContinuesWord(wchar_t character) {
  const auto code = static_cast<char32_t>(character);
  if (code < 0x80) return (code >= 'a' && code <= 'z') || (code >= 'A' && code <= 'Z');
  return code >= 0xC0 && code < 0x2000;
}

std::wstring_view WithoutOuterBlanks(std::wstring_view text) {
  while (!text.empty() && IsBlankCharacter(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlankCharacter(text.back())) text.remove_suffix(1);
  return text;
}

bool IsSeparators(std::wstring_view text) {
  return std::all_of(text.begin(), text.end(), [](wchar_t c) {
    return IsBlankCharacter(c) || IsDateSeparator(c) || c == L':';
  });
}

// The first three letters of a month's name, as people shorten it whatever the locale says ("Sep"
// beside "Sept"). "" where another month begins with them too.
std::wstring_view UsualBeginning(const std::array<std::wstring, 12>& months, std::size_t index) {
  const std::wstring_view beginning = std::wstring_view(months[index]).substr(0, 3);
  const bool letters = std::all_of(beginning.begin(), beginning.end(), ContinuesWord);
  const auto same = std::count_if(months.begin(), months.end(), [&](const std::wstring& month) {
    return month.starts_with(beginning);
  });
  return letters && same == 1 ? beginning : std::wstring_view{};
}

}  // namespace

DateWords::DateWords(const CalendarNames& names, const RegionalSettings& settings,
                     const std::vector<PictureItem>& short_date,
                     const std::vector<PictureItem>& long_time) {
  const auto add = [this](std::wstring_view name, const auto& give_meaning) {
    name = WithoutOuterBlanks(name);
    if (IsSeparators(name)) return;
    give_meaning(*Add(name));
    // "Nov." is also written "Nov".
    if (name.back() == L'.') give_meaning(*Add(name.substr(0, name.size() - 1)));
  };
  for (const auto* months : {&names.months, &names.months_of_dates, &names.short_months})
    for (unsigned i = 0; i < months->size(); ++i)
      add((*months)[i], [i](DateWord& word) { word.month = i + 1; });
  for (std::size_t i = 0; i < names.months.size(); ++i) {
    const std::wstring_view beginning = UsualBeginning(names.months, i);
    add(beginning, [i](DateWord& word) { word.month = static_cast<unsigned>(i + 1); });
  }
  for (const auto* weekdays : {&names.weekdays, &names.short_weekdays})
    for (const std::wstring& weekday : *weekdays)
      add(weekday, [](DateWord& word) { word.weekday = true; });
  const auto morning = [](DateWord& word) { word.designator = Designator::kMorning; };
  const auto afternoon = [](DateWord& word) { word.designator = Designator::kAfternoon; };
  for (const wchar_t* name : {L"AM", L"A"}) add(name, morning);
  for (const wchar_t* name : {L"PM", L"P"}) add(name, afternoon);
  add(settings.morning, morning);
  add(settings.afternoon, afternoon);
  for (const auto* picture : {&short_date, &long_time}) {
    for (const PictureItem& item : *picture)
      if (item.letter == 0) add(item.text, [](DateWord&) {});
  }
  std::stable_sort(words_.begin(), words_.end(), [](const DateWord& a, const DateWord& b) {
    return a.text.size() > b.text.size();
  });
}

DateWord* DateWords::Add(std::wstring_view spelling) {
  const std::wstring lower = LowerCase(spelling);
  const auto found = std::find_if(words_.begin(), words_.end(),
                                  [&](const DateWord& word) { return word.text == lower; });
  if (found != words_.end()) return &*found;
  words_.push_back({.text = lower});
  return &words_.back();
}

const DateWord* DateWords::Longest(std::wstring_view lower_text, std::size_t position) const {
  const std::wstring_view rest = lower_text.substr(position);
  for (const DateWord& word : words_) {
    if (!rest.starts_with(word.text)) continue;
    const std::size_t end = word.text.size();
    if (end < rest.size() && ContinuesWord(rest[end]) && ContinuesWord(word.text.back())) continue;
    return &word;
  }
  return nullptr;
}

}  // namespace pxscheduler
