#include <gtest/gtest.h>

#include "data/value.h"
#include "tests/support/fake_platform.h"

namespace pxscheduler {
namespace {

using namespace std::chrono_literals;
using std::chrono::sys_days;

void ExpectDate(const Regional& regional, const DateTime& expected,
                std::initializer_list<const wchar_t*> texts) {
  for (const wchar_t* text : texts) {
    const std::optional<DateTime> read = regional.ReadDate(text);
    ASSERT_TRUE(read) << text;
    EXPECT_EQ(*read, expected) << text << " gave " << GeneralDate(regional, *read);
  }
}

PictureRegional SwedishRegional() {
  RegionalSettings settings = EnglishSettings();
  settings.short_date = L"yyyy-MM-dd";
  settings.long_time = L"HH:mm:ss";
  return PictureRegional(settings);
}

TEST(DateReading, UnitedStates) {
  const PictureRegional regional = EnglishRegional();
  ExpectDate(regional, {2026y / 11 / 16},
             {L"11/16/2026", L"16/11/2026", L"2026-11-16", L"2026/16/11", L"11-16-26",
              L"11.16.2026", L"11, 16, 2026", L" 11 16 2026 ", L"11 / 16 / 2026"});
  ExpectDate(regional, {2026y / 11 / 16},
             {L"November 16, 2026", L"16 NOV 2026", L"16-Nov-26", L"2026 Nov 16", L"16Nov2026",
              L"Monday, November 16, 2026", L"Fri 11/16/2026"});
  ExpectDate(regional, {2026y / 5 / 6}, {L"5/6/2026"});
  ExpectDate(regional, {2026y / 3 / 1}, {L"2026-3-1"});
  ExpectDate(regional, {2024y / 2 / 29}, {L"2/29/2024"});
  ExpectDate(regional, {2029y / 2 / 1}, {L"2/29"});
  ExpectDate(regional, {2029y / 1 / 1}, {L"1/1/29"});
  ExpectDate(regional, {1930y / 1 / 1}, {L"1/1/30"});
  ExpectDate(regional, {1930y / 2 / 26}, {L"30/2/26"});
  ExpectDate(regional, {100y / 1 / 1}, {L"1/1/100"});
  ExpectDate(regional, {9999y / 12 / 31}, {L"12/31/9999"});
  ExpectDate(regional, {2026y / 11 / 17}, {L"11/17", L"17/11", L"Nov 17", L"17 Nov"});
  ExpectDate(regional, {2027y / 11 / 1}, {L"11/2027", L"2027/11", L"Nov 2027"});
  ExpectDate(regional, {1945y / 11 / 1}, {L"11/45", L"November 45"});
}

TEST(DateReading, TimesOfDay) {
  const PictureRegional regional = EnglishRegional();
  const sys_days day = 2026y / 11 / 16;
  ExpectDate(regional, {day, 15h + 7min + 41s},
             {L"11/16/2026 3:07:41 PM", L"2026-11-16T15:07:41", L"2026-11-16 15:07:41.9999999"});
  ExpectDate(regional, {day, 15h + 7min},
             {L"11/16/2026 15:07", L"11/16/2026 15:07 PM", L"11/16/2026 PM 3:07",
              L"11/16/2026\u00A03:07\u202FPM", L"Nov 16 2026  3:07PM"});
  ExpectDate(regional, {day, 15h + 30min}, {L"11/16/2026 3:30PM", L"3:30 p, 11/16/2026"});
  ExpectDate(regional, {day, 15h}, {L"11/16/2026 3 pm"});
  ExpectDate(regional, {day, 12h}, {L"2026-11-16 12:00P"});
  ExpectDate(regional, {day}, {L"11/16/2026 12:00A"});
  const sys_days no_day = 1899y / 12 / 30;
  ExpectDate(regional, {no_day, 16h + 5min}, {L"16:05"});
  ExpectDate(regional, {no_day, 16h}, {L"4 PM"});
  ExpectDate(regional, {no_day, 24h - 1s}, {L"23:59:59"});
}

TEST(DateReading, UnitedKingdomAndGermany) {
  const PictureRegional german = GermanRegional();
  for (const PictureRegional& regional : {BritishRegional(), german}) {
    ExpectDate(regional, {2026y / 6 / 5}, {L"5/6/2026", L"5.6.", L"05-06-26"});
    ExpectDate(regional, {2026y / 5 / 6}, {L"2026-05-06"});
    ExpectDate(regional, {2026y / 11 / 16}, {L"16.11.2026", L"11/16/2026"});
    ExpectDate(regional, {1999y / 1 / 31}, {L"31.1.99", L"99/1/31"});
    ExpectDate(regional, {2026y / 11 / 16, 15h + 7min}, {L"16.11.2026 15:07"});
  }
  ExpectDate(german, {2026y / 11 / 16}, {L"16. November 2026", L"Mo., 16. Nov. 2026"});
  ExpectDate(german, {2026y / 3 / 5}, {L"5. M\u00C4RZ"});
  ExpectDate(german, {2026y / 9 / 1}, {L"1. Sept. 2026", L"1 sept 2026", L"1-SEP-2026"});
  ExpectDate(german, {2026y / 6 / 1}, {L"1 Jun 2026"});
  ExpectDate(german, {2026y / 11 / 16, 15h + 7min + 41s}, {L"Montag, 16.11.2026 15:07:41"});
}

TEST(DateReading, YearFirst) {
  const PictureRegional regional = SwedishRegional();
  ExpectDate(regional, {2026y / 11 / 16},
             {L"2026-11-16", L"26-11-16", L"16/11/2026", L"26 Nov 16", L"16 Nov 2026"});
  ExpectDate(regional, {2026y / 5 / 6}, {L"5/6/2026"});
  ExpectDate(regional, {2026y / 11 / 17}, {L"11-17"});
}

TEST(DateReading, RefusesWhatIsNoDate) {
  const PictureRegional regional = EnglishRegional();
  for (const wchar_t* text :
       {L"", L" ", L"abc", L"16", L"45000", L"1.5e3", L"13/13/2026", L"2/30/2026", L"0/0/0",
        L"11/16/", L"/11/16", L"11//16/2026", L"11/16/2026/5", L"11/16/99999", L"11/16/0026",
        L"0001-01-01", L"-11/16/2026", L"11/16/2026 x", L"11/16/2026\n"})
    EXPECT_FALSE(regional.ReadDate(text)) << text;
  for (const wchar_t* text :
       {L"Nov", L"Monday", L"Monday 3 PM", L"PM", L"24:00", L"12:60", L"13:00 AM", L"3:", L"3:07:",
        L"3:07 4:08", L"3:07 AM PM", L"16 Nov Dec 2026", L"16 Nov 11 2026", L"Novem 16 2026",
        L"2026-11-16T", L"2026-11-16T15:07:41Z"})
    EXPECT_FALSE(regional.ReadDate(text)) << text;
  EXPECT_FALSE(regional.ReadDate(std::wstring(L"11/16/2026\0", 11)));
  EXPECT_FALSE(regional.ReadDate(std::wstring(1'000'000, L'1')));
  EXPECT_FALSE(regional.ReadDate(std::wstring(1'000'000, L'.')));
}

TEST(DateReading, TellsAMonthFromAWeekdayOfTheSameSpelling) {
  RegionalSettings settings = EnglishSettings();
  settings.short_date = L"dd/MM/yyyy";
  settings.names = [] {
    CalendarNames names;
    names.short_months[2] = L"mar";
    names.short_months[10] = L"nov";
    names.short_weekdays[2] = L"mar";
    return names;
  };
  const PictureRegional regional(settings);
  ExpectDate(regional, {2026y / 3 / 17}, {L"17 mar 2026", L"mar 17 mar 2026"});
  ExpectDate(regional, {2026y / 11 / 17}, {L"mar, 17 nov 2026", L"mar 17/11/2026"});
}

// Whatever a locale writes it reads again.
TEST(DateReading, ReadsItsOwnGeneralForm) {
  const struct {
    const wchar_t* short_date;
    const wchar_t* long_time;
    const wchar_t* morning;
    const wchar_t* afternoon;
  } cases[] = {
      {L"M/d/yyyy", L"h:mm:ss tt", L"AM", L"PM"},
      {L"dd-MM-yy", L"HH.mm.ss", L"", L""},
      {L"d.M.yyyy", L"H.mm.ss", L"ap.", L"ip."},
      {L"yyyy. MM. dd.", L"H:mm:ss", L"de.", L"du."},
      {L"d.M.yyyy '\u0433.'", L"HH:mm:ss '\u0447.'", L"", L""},
      {L"yyyy'\u5E74'M'\u6708'd'\u65E5'", L"tt h:mm:ss", L"\u4E0A\u5348", L"\u4E0B\u5348"},
      {L"dd/MM/yyyy", L"h:mm:ss tt", L"a. m.", L"p. m."},
      {L"dddd, d MMMM yyyy", L"HH:mm:ss", L"", L""},
      {L"dd-MMM-yyyy", L"h:mm:ss t", L"AM", L"PM"},
  };
  for (const auto& c : cases) {
    RegionalSettings settings = EnglishSettings();
    settings.short_date = c.short_date;
    settings.long_time = c.long_time;
    settings.morning = c.morning;
    settings.afternoon = c.afternoon;
    const PictureRegional regional(settings);
    for (const DateTime value : {DateTime{2026y / 3 / 5, 15h + 7min + 41s},
                                 DateTime{1999y / 12 / 31, 7min}, DateTime{2000y / 2 / 29}}) {
      const std::wstring text = GeneralDate(regional, value);
      EXPECT_EQ(regional.ReadDate(text), value) << text;
    }
  }
}

// However odd the picture is, a date is written as if its text had been read.
TEST(DateReading, WritesAValueAsItsText) {
  std::size_t reading_back = 0;
  for (const wchar_t* picture :
       {L"M/d/yyyy", L"dd.MM.yyyy", L"yyyy-MM-dd", L"d,yyy,MM", L"M/d/yy", L"yy-MM-dd",
        L"yyyy-dd-MM", L"yyyy/M", L"d/d/yyyy", L"M//d/yyyy", L"d.M.yyyy.", L"/d/M/yyyy",
        L"d M yyyy", L"d/MMM/yyyy", L"ddd/M/yyyy", L"M/d/yyyy/d", L""}) {
    RegionalSettings settings = EnglishSettings();
    settings.short_date = picture;
    const PictureRegional regional(settings);
    if (regional.ReadsBackShortDates()) ++reading_back;
    const auto expect_as_text = [&](const Value& value) {
      const std::wstring text = TextOf(regional, value);
      EXPECT_EQ(ShortDateOf(regional, value), FormatShortDate(regional, text)) << picture << text;
      EXPECT_EQ(MonthDayOf(regional, value), FormatMonthDay(regional, text)) << picture << text;
    };
    for (sys_days day = 99y / 12 / 28; day < sys_days{9999y / 12 / 31};
         day += std::chrono::days{541})
      expect_as_text(DateTime{day});
    for (const Value& value :
         {Value{}, Value{L"11/16/2026"}, Value{L"next spring"}, Value{std::int64_t{7}},
          Value{DateTime{9999y / 12 / 31}}, Value{DateTime{2026y / 3 / 5, 15h + 7min + 41s}}})
      expect_as_text(value);
  }
  EXPECT_EQ(reading_back, 4U);
}

}  // namespace
}  // namespace pxscheduler
