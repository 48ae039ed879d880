#include "platform/linux/icu_names.h"

#include <unicode/dtfmtsym.h>
#include <unicode/locid.h>
#include <unicode/ures.h>

#include <array>
#include <cstddef>
#include <memory>
#include <string>

#include "platform/dates/english_names.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

std::wstring WideText(const icu::UnicodeString& text) {
  std::wstring wide;
  for (int i = 0; i < text.length(); i = text.moveIndex32(i, 1))
    wide += static_cast<wchar_t>(text.char32At(i));
  return wide;
}

template <std::size_t Count>
void CopyNames(const icu::UnicodeString* from, int count, std::size_t skipped,
               std::array<std::wstring, Count>& to) {
  if (static_cast<std::size_t>(count) < skipped + Count) return;
  for (std::size_t i = 0; i < Count; ++i) to[i] = WideText(from[skipped + i]);
}

struct BundleCloser {
  void operator()(UResourceBundle* bundle) const { ures_close(bundle); }
};

// ICU would go on with the language of the environment otherwise.
bool IsKnownLanguage(const icu::Locale& locale) {
  UErrorCode error = U_ZERO_ERROR;
  const std::unique_ptr<UResourceBundle, BundleCloser> bundle(
      ures_open(nullptr, locale.getLanguage(), &error));
  return U_SUCCESS(error) && error != U_USING_DEFAULT_WARNING;
}

}  // namespace

CalendarNames IcuCalendarNames(std::wstring_view locale_name) {
  // Known by heart, because opening ICU's data takes milliseconds and this is the usual locale.
  if (locale_name == L"en-US") return EnglishCalendarNames();
  using Symbols = icu::DateFormatSymbols;
  UErrorCode error = U_ZERO_ERROR;
  const icu::Locale locale = icu::Locale::forLanguageTag(ToUtf8(locale_name).c_str(), error);
  if (U_FAILURE(error) || !IsKnownLanguage(locale)) return EnglishCalendarNames();
  const Symbols symbols(locale, "gregorian", error);
  if (U_FAILURE(error)) return EnglishCalendarNames();
  CalendarNames names;
  int count = 0;
  const auto* list = symbols.getMonths(count, Symbols::STANDALONE, Symbols::WIDE);
  CopyNames(list, count, 0, names.months);
  list = symbols.getMonths(count, Symbols::FORMAT, Symbols::WIDE);
  CopyNames(list, count, 0, names.months_of_dates);
  list = symbols.getMonths(count, Symbols::FORMAT, Symbols::ABBREVIATED);
  CopyNames(list, count, 0, names.short_months);
  // ICU counts weekdays from 1, Sunday.
  list = symbols.getWeekdays(count, Symbols::STANDALONE, Symbols::WIDE);
  CopyNames(list, count, 1, names.weekdays);
  list = symbols.getWeekdays(count, Symbols::FORMAT, Symbols::ABBREVIATED);
  CopyNames(list, count, 1, names.short_weekdays);
  return names;
}

}  // namespace pxscheduler
