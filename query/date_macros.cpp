#include "query/date_macros.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string_view>
#include <thread>
#include <utility>

#include "config/helper_library.h"
#include "data/value.h"
#include "platform/civil_time.h"
#include "platform/runtime_error.h"
#include "query/sql_literals.h"

namespace pxscheduler {
namespace {

using std::chrono::Saturday;
using std::chrono::Sunday;
using std::chrono::sys_days;
using std::chrono::weekday;

// How a macro's dates follow from today. The letters are the two numbers of a row of the table.
enum class Rule {
  kDays,             // the days from today + a to today + b
  kWeek,             // the week a weeks from this one
  kMonths,           // b whole months, the first a months from this one
  kYear,             // the year a years from this one
  kNumberedDays,     // the day a * n days from today, n being the number in the macro
  kNumberedMonths,   // the day a * n months from today
  kFirstDayOfWeek,   // the Sunday on or before the day a weeks from today
  kLastDayOfWeek,    // the Saturday on or after it
  kFirstDayOfMonth,  // the first day of the month a months from this one
  kLastDayOfMonth,   // its last day
  kFirstDayOfYear,   // 1 January of the year a years from this one
  kLastDayOfYear,    // 31 December of it
};

struct DateMacro {
  std::wstring_view key;
  Rule rule;
  int a;
  int b = 0;
};

// In the order of processing. The numbered macros are found by their tails.
constexpr DateMacro kDateMacros[] = {
    {L"[TODAY]", Rule::kDays, 0, 0},
    {L"[TOMORROW]", Rule::kDays, 1, 1},
    {L"[THISWEEK]", Rule::kWeek, 0},
    {L"[NEXTWEEK]", Rule::kWeek, 1},
    {L"[NEXT7DAYS]", Rule::kDays, 1, 7},
    {L"[NEXT14DAYS]", Rule::kDays, 1, 14},
    {L"[NEXT30DAYS]", Rule::kDays, 1, 30},
    {L"[THISMONTH]", Rule::kMonths, 0, 1},
    {L"[NEXTMONTH]", Rule::kMonths, 1, 1},
    {L"[NEXT3MONTHS]", Rule::kMonths, 1, 3},
    {L"[NEXT6MONTHS]", Rule::kMonths, 1, 6},
    {L"[THISYEAR]", Rule::kYear, 0},
    {L"[NEXTYEAR]", Rule::kYear, 1},
    {L"[YESTERDAY]", Rule::kDays, -1, -1},
    {L"[LASTWEEK]", Rule::kWeek, -1},
    {L"[LAST7DAYS]", Rule::kDays, -7, -1},
    {L"[LAST14DAYS]", Rule::kDays, -14, -1},
    {L"[LAST30DAYS]", Rule::kDays, -30, -1},
    {L"[LASTMONTH]", Rule::kMonths, -1, 1},
    {L"[LAST3MONTHS]", Rule::kMonths, -3, 3},
    {L"[LAST6MONTHS]", Rule::kMonths, -6, 6},
    {L"[LASTYEAR]", Rule::kYear, -1},
    {L"DAYS AGO]", Rule::kNumberedDays, -1},
    {L"DAYS FROM NOW]", Rule::kNumberedDays, 1},
    {L"WEEKS AGO]", Rule::kNumberedDays, -7},
    {L"WEEKS FROM NOW]", Rule::kNumberedDays, 7},
    {L"MONTHS AGO]", Rule::kNumberedMonths, -1},
    {L"MONTHS FROM NOW]", Rule::kNumberedMonths, 1},
    {L"[FIRST DAY OF THIS WEEK]", Rule::kFirstDayOfWeek, 0},
    {L"[LAST DAY OF THIS WEEK]", Rule::kLastDayOfWeek, 0},
    {L"[FIRST DAY OF NEXT WEEK]", Rule::kFirstDayOfWeek, 1},
    {L"[LAST DAY OF NEXT WEEK]", Rule::kLastDayOfWeek, 1},
    {L"[FIRST DAY OF LAST WEEK]", Rule::kFirstDayOfWeek, -1},
    {L"[LAST DAY OF LAST WEEK]", Rule::kLastDayOfWeek, -1},
    {L"[FIRST DAY OF THIS MONTH]", Rule::kFirstDayOfMonth, 0},
    {L"[LAST DAY OF THIS MONTH]", Rule::kLastDayOfMonth, 0},
    {L"[FIRST DAY OF NEXT MONTH]", Rule::kFirstDayOfMonth, 1},
    {L"[LAST DAY OF NEXT MONTH]", Rule::kLastDayOfMonth, 1},
    {L"[FIRST DAY OF LAST MONTH]", Rule::kFirstDayOfMonth, -1},
    {L"[LAST DAY OF LAST MONTH]", Rule::kLastDayOfMonth, -1},
    {L"[FIRST DAY OF THIS YEAR]", Rule::kFirstDayOfYear, 0},
    {L"[LAST DAY OF THIS YEAR]", Rule::kLastDayOfYear, 0},
    {L"[FIRST DAY OF NEXT YEAR]", Rule::kFirstDayOfYear, 1},
    {L"[LAST DAY OF NEXT YEAR]", Rule::kLastDayOfYear, 1},
    {L"[FIRST DAY OF LAST YEAR]", Rule::kFirstDayOfYear, -1},
    {L"[LAST DAY OF LAST YEAR]", Rule::kLastDayOfYear, -1},
};

constexpr int kAnniversaries[] = {1, 5, 10, 15, 20, 25, 30, 35, 40, 45, 50, 55, 60, 65, 70, 75};

constexpr std::chrono::seconds kPauseOfEndlessMacro{1};

bool IsNumbered(const DateMacro& macro) {
  return macro.rule == Rule::kNumberedDays || macro.rule == Rule::kNumberedMonths;
}

sys_days ReadDay(const Regional& regional, const std::wstring& text) {
  const std::optional<DateTime> value = regional.ReadDate(text);
  if (!value)
    throw Explained(TypeMismatch(),
                    text.empty() ? L"A macro of a single day stands after Birthdate or "
                                   L"AnniversaryDate, and no macro before it gives a last day."
                                 : L"\"" + text + L"\" is no date by the regional settings.");
  return value->date;
}

sys_days SundayOnOrBefore(sys_days date) { return date - (weekday{date} - Sunday); }
sys_days SaturdayOnOrAfter(sys_days date) { return date + (Saturday - weekday{date}); }

// A day built from the text year-month-day, with the month and day as they are.
std::wstring WriteYearMonthDay(const Regional& regional, int year, unsigned month, unsigned day) {
  return FormatShortDate(regional, std::to_wstring(year) + L"-" + std::to_wstring(month) + L"-" +
                                       std::to_wstring(day));
}

std::wstring FirstOfMonth(const Regional& regional, sys_days date) {
  const std::chrono::year_month_day day{date};
  return WriteYearMonthDay(regional, static_cast<int>(day.year()),
                           static_cast<unsigned>(day.month()), 1);
}

int YearOf(sys_days date) { return static_cast<int>(std::chrono::year_month_day{date}.year()); }

// Sets the dates that the macro gives; `number` is n of a numbered macro, else 0.
void ComputeDates(const Regional& regional, const DateMacro& macro, sys_days today,
                  std::int32_t number, DateMacroExpansion& expansion) {
  const auto in_weeks = [&] { return AddDays(today, std::int64_t{7} * macro.a); };
  std::wstring& start = expansion.start_date;
  std::wstring& end = expansion.end_date;
  switch (macro.rule) {
    case Rule::kDays:
      start = regional.ShortDate(AddDays(today, macro.a));
      end = regional.ShortDate(AddDays(today, macro.b));
      break;
    case Rule::kWeek:
      start = regional.ShortDate(SundayOnOrBefore(in_weeks()));
      end = regional.ShortDate(AddDays(ReadDay(regional, start), 6));
      break;
    case Rule::kMonths: {
      start = FirstOfMonth(regional, AddMonths(today, macro.a));
      const std::wstring following =
          FirstOfMonth(regional, AddMonths(ReadDay(regional, start), macro.b));
      end = regional.ShortDate(AddDays(ReadDay(regional, following), -1));
      break;
    }
    case Rule::kYear:
      start = WriteYearMonthDay(regional, YearOf(today) + macro.a, 1, 1);
      end = WriteYearMonthDay(regional, YearOf(today) + macro.a, 12, 31);
      break;
    case Rule::kNumberedDays:
      start = regional.ShortDate(AddDays(today, std::int64_t{macro.a} * number));
      break;
    case Rule::kNumberedMonths:
      start = regional.ShortDate(AddMonths(today, std::int64_t{macro.a} * number));
      break;
    case Rule::kFirstDayOfWeek:
      start = regional.ShortDate(SundayOnOrBefore(in_weeks()));
      break;
    case Rule::kLastDayOfWeek:
      start = regional.ShortDate(SaturdayOnOrAfter(in_weeks()));
      break;
    case Rule::kFirstDayOfMonth:
      start = FirstOfMonth(regional, AddMonths(today, macro.a));
      break;
    case Rule::kLastDayOfMonth: {
      const std::wstring first = FirstOfMonth(regional, AddMonths(today, macro.a));
      start = regional.ShortDate(AddDays(AddMonths(ReadDay(regional, first), 1), -1));
      break;
    }
    case Rule::kFirstDayOfYear:
      start = WriteYearMonthDay(regional, YearOf(today) + macro.a, 1, 1);
      break;
    case Rule::kLastDayOfYear:
      start = WriteYearMonthDay(regional, YearOf(today) + macro.a, 12, 31);
      break;
  }
}

// The month-and-day numbers of every day from the start date to the end date, "(1231,101)" for the
// turn of a year. Leaves the start date on the day after the last.
std::wstring MonthDayList(const Regional& regional, DateMacroExpansion& expansion) {
  std::wstring list;
  sys_days day = ReadDay(regional, expansion.start_date);
  const sys_days last = ReadDay(regional, expansion.end_date);
  for (; day <= last; day = AddDays(day, 1)) {
    const std::chrono::year_month_day date{day};
    const unsigned month_day =
        static_cast<unsigned>(date.month()) * 100 + static_cast<unsigned>(date.day());
    list += std::to_wstring(month_day) + L",";
  }
  expansion.start_date = regional.ShortDate(day);
  return L"(" + StripTrailing(list, L",") + L")";
}

bool Holds(std::wstring_view text, std::wstring_view part) {
  return text.find(part) != std::wstring_view::npos;
}

// What the macro at `position` (1-based) becomes, by the column that stands before it: the text is
// looked at in slices of 20 characters that begin 5, 10, 15, ... characters before the macro.
// Nothing where no slice holds one of the columns.
std::optional<std::wstring> ReplacementByColumn(const Regional& regional, const CodePage& ansi,
                                                std::size_t position,
                                                DateMacroExpansion& expansion) {
  constexpr std::size_t kSliceStep = 5;
  constexpr std::size_t kSliceLength = 20;
  for (std::size_t back = kSliceStep; back < position; back += kSliceStep) {
    const std::wstring_view slice =
        std::wstring_view{expansion.text}.substr(position - back - 1, kSliceLength);
    if (Holds(slice, L"AnniversaryDate") || Holds(slice, L"Birthdate"))
      return MonthDayList(regional, expansion);
    if (Holds(slice, L"ReturnDate") || Holds(slice, L"TravelDate") || Holds(slice, L"LastDate") ||
        Holds(slice, L"FirstDate"))
      return FormatSqlDate(regional, ansi, expansion.start_date);
  }
  return std::nullopt;
}

// The date or the range in readable form, which a text that begins with a macro becomes.
std::wstring Caption(const Regional& regional, const DateMacroExpansion& expansion) {
  std::wstring caption = FormatShortDate(regional, expansion.start_date);
  if (!IsBlank(expansion.end_date) && expansion.end_date != expansion.start_date)
    caption += L" - " + FormatShortDate(regional, expansion.end_date);
  return caption;
}

std::wstring EndlessMacro(const DateMacroExpansion& expansion) {
  const std::wstring_view macro = kDateMacros[expansion.slot].key;
  return L"The query holds a date macro that ends in \"" + std::wstring(macro) + L"\" (character " +
         std::to_wstring(expansion.text.find(macro) + 1) +
         L") and has none of the columns Birthdate, AnniversaryDate, TravelDate, ReturnDate, "
         L"FirstDate "
         L"and LastDate, in this case of letters, where it is looked for before the macro: this "
         L"run "
         L"never ends. Stop it and correct the query.";
}

}  // namespace

bool ExpandNextDateMacro(const System& system, const Regional& regional, const CodePage& ansi,
                         DateMacroExpansion& expansion) {
  std::wstring& text = expansion.text;
  std::size_t found = std::wstring::npos;
  while (expansion.slot < std::size(kDateMacros)) {
    found = text.find(kDateMacros[expansion.slot].key);
    if (found != std::wstring::npos) break;
    ++expansion.slot;
  }
  if (found == std::wstring::npos) return false;

  const DateMacro& macro = kDateMacros[expansion.slot];
  std::size_t position = found + 1;
  if (!IsNumbered(macro)) {
    ComputeDates(regional, macro, system.Now().local.date, 0, expansion);
  } else if (const std::size_t bracket = text.rfind(L'[', found); bracket != std::wstring::npos) {
    const double number =
        LeadingNumber(std::wstring_view{text}.substr(bracket + 1, found - bracket - 1));
    ComputeDates(regional, macro, system.Now().local.date, ToWholeNumber(number), expansion);
    position = bracket + 1;
  }

  if (position == 1) {
    text = Caption(regional, expansion);
    return true;
  }
  if (const auto replacement = ReplacementByColumn(regional, ansi, position, expansion)) {
    const std::size_t end = text.find(L']', position - 1) + 1;
    text.replace(position - 1, end - (position - 1), *replacement);
  }
  return true;
}

std::wstring ExpandAnniversaryMacros(const CodePage& ansi, std::wstring text) {
  for (const int years : kAnniversaries) {
    const std::wstring macro = L"[" + std::to_wstring(years) + L"]";
    if (!Holds(text, macro)) continue;
    const std::wstring condition =
        L"(MONTH(AnniversaryDate)<MONTH(GETDATE()) AND DATEDIFF(YEAR,AnniversaryDate,GETDATE())=" +
        std::to_wstring(years - 1) +
        L") OR (MONTH(AnniversaryDate)>=MONTH(GETDATE()) AND "
        L"DATEDIFF(YEAR,AnniversaryDate,GETDATE())=" +
        std::to_wstring(years) + L")";
    text = Stuff(ansi, text, macro, L" AND (" + condition + L")");
  }
  return text;
}

std::wstring ExpandDateMacros(System& system, const Regional& regional, const CodePage& ansi,
                              const std::wstring& sql) {
  DateMacroExpansion expansion{.text = sql, .start_date = {}, .end_date = {}};
  bool is_told = false;
  for (std::wstring before = sql; ExpandNextDateMacro(system, regional, ansi, expansion);
       before = expansion.text) {
    if (expansion.text != before) continue;
    if (!std::exchange(is_told, true)) system.Warn(EndlessMacro(expansion));
    std::this_thread::sleep_for(kPauseOfEndlessMacro);
  }
  return ExpandAnniversaryMacros(ansi, std::move(expansion.text));
}

}  // namespace pxscheduler
