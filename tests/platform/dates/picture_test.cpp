#include "platform/dates/picture.h"

#include <gtest/gtest.h>

#include "tests/support/fake_platform.h"

namespace pxscheduler {
namespace {

using namespace std::chrono_literals;

TEST(Picture, WritesDates) {
  const struct {
    const wchar_t* picture;
    std::chrono::sys_days date;
    const wchar_t* expected;
  } cases[] = {
      {L"M/d/yyyy", 2026y / 3 / 5, L"3/5/2026"},
      {L"dd.MM.yy", 2026y / 3 / 5, L"05.03.26"},
      {L"yyyy-MM-dd", 100y / 1 / 1, L"0100-01-01"},
      {L"d-M-y", 2009y / 12 / 31, L"31-12-9"},
      {L"ddd, d MMM yyyy", 2026y / 11 / 16, L"Mon, 16 Nov 2026"},
      {L"dddd, MMMM dd", 2024y / 2 / 29, L"Thursday, February 29"},
      {L"yyyy'year'M'month'd'day'", 2026y / 11 / 16, L"2026year11month16day"},
      {L"d 'o''clock' '' M", 2026y / 11 / 16, L"16 o'clock  11"},
      {L"yyyy 'open", 2026y / 11 / 16, L"2026 open"},
      {L"", 2026y / 11 / 16, L""},
  };
  for (const auto& c : cases) {
    RegionalSettings settings = EnglishSettings();
    settings.short_date = c.picture;
    EXPECT_EQ(PictureRegional(settings).ShortDate(c.date), c.expected) << c.picture;
  }
}

TEST(Picture, WritesTimes) {
  const struct {
    const wchar_t* picture;
    std::chrono::seconds time;
    const wchar_t* expected;
  } cases[] = {
      {L"h:mm:ss tt", 15h + 7min + 41s, L"3:07:41 PM"},
      {L"h:mm:ss tt", 0s, L"12:00:00 AM"},
      {L"hh:mm t", 12h, L"12:00 P"},
      {L"HH:mm", 9h + 5min, L"09:05"},
      {L"H.m.s", 9h + 5min + 3s, L"9.5.3"},
      {L"HH'h'mm", 23h + 59min + 59s, L"23h59"},
  };
  for (const auto& c : cases) {
    RegionalSettings settings = EnglishSettings();
    settings.long_time = c.picture;
    EXPECT_EQ(PictureRegional(settings).LongTime(c.time), c.expected) << c.picture;
  }
}

TEST(Picture, NamesTheMonthInItsFormBesideADay) {
  RegionalSettings settings = EnglishSettings();
  settings.names = [] {
    CalendarNames names;
    names.months[10] = L"listopad";
    names.months_of_dates[10] = L"listopada";
    return names;
  };
  settings.short_date = L"d MMMM yyyy";
  EXPECT_EQ(PictureRegional(settings).ShortDate(2026y / 11 / 16), L"16 listopada 2026");
  settings.short_date = L"dddd MMMM yyyy";
  EXPECT_EQ(PictureRegional(settings).ShortDate(2026y / 11 / 16), L" listopad 2026");
  EXPECT_EQ(PictureRegional(settings).MonthName(11), L"listopad");
}

}  // namespace
}  // namespace pxscheduler
