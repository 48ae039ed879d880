#include "app/linux/machine.h"

#include <gtest/gtest.h>

#include "platform/linux/icu_names.h"
#include "platform/runtime_error.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/scratch_folder.h"

namespace pxscheduler {
namespace {

using namespace std::chrono_literals;

class MachineTest : public testing::Test {
 protected:
  void WriteRegistry(const std::string& lines) const {
    folder_.Write("a.reg", "Windows Registry Editor Version 5.00\n" + lines);
  }

  ScratchFolder folder_;
  ScopedEnvironment registry_{"PXSCHEDULER_REGISTRY", folder_.Path("a.reg")};
  const char* arguments_[1] = {"program"};
  LinuxMachine machine_{1, arguments_};
};

TEST_F(MachineTest, HasDefaultsWithoutARegistry) {
  const Regional& regional = machine_.TheRegional();
  EXPECT_EQ(GeneralDate(regional, {2026y / 11 / 16, 15h + 7min + 41s}), L"11/16/2026 3:07:41 PM");
  EXPECT_EQ(regional.ShortTime(9h + 5min), L"09:05");
  EXPECT_EQ(regional.MonthName(5), L"May");
  EXPECT_EQ(machine_.TheCodePages().Ansi().ToBytes(L"\u20AC"), "\x80");
}

TEST_F(MachineTest, TakesTheSettingsOfTheRegistry) {
  WriteRegistry(
      "[HKEY_CURRENT_USER\\Control Panel\\International]\n"
      "\"LocaleName\"=\"pl-PL\"\n\"sShortDate\"=\"d MMMM yyyy\"\n\"sTimeFormat\"=\"h.mm.ss tt\"\n"
      "\"sShortTime\"=\"H.mm\"\n\"s1159\"=\"rano\"\n\"s2359\"=\"po\"\n"
      "[HKEY_LOCAL_MACHINE\\System\\CurrentControlSet\\Control\\Nls\\CodePage]\n\"ACP\"="
      "\"1250\"\n");
  const Regional& regional = machine_.TheRegional();
  const DateTime value{2026y / 10 / 16, 15h + 7min + 41s};
  EXPECT_EQ(GeneralDate(regional, value), L"16 pa\u017Adziernika 2026 3.07.41 po");
  EXPECT_EQ(regional.ReadDate(GeneralDate(regional, value)), value);
  EXPECT_EQ(regional.ShortTime(9h + 5min), L"9.05");
  EXPECT_EQ(regional.MonthName(10), L"pa\u017Adziernik");
  EXPECT_EQ(machine_.TheCodePages().Ansi().ToBytes(L"\u0142"), "\xB3");
}

TEST_F(MachineTest, StopsAtAMalformedRegistryAndStillShowsWhy) {
  WriteRegistry("[HKLM\\K\n");
  EXPECT_THROW(machine_.TheRegistry(), RuntimeError);
  EXPECT_THROW(machine_.TheRegional(), RuntimeError);
  machine_.TheSystem().Warn(L"");
}

TEST(IcuCalendarNames, NamesEveryMonthInEveryLanguage) {
  for (const wchar_t* locale : {L"en-US", L"de-DE", L"fr-FR", L"ru-RU", L"ja-JP", L"ar-SA",
                                L"zh-Hant-TW", L"nb-NO", L"xx-XX", L"not a locale", L""}) {
    const CalendarNames names = IcuCalendarNames(locale);
    for (const auto* months : {&names.months, &names.months_of_dates, &names.short_months})
      for (const std::wstring& month : *months) EXPECT_NE(month, L"") << locale;
    for (const std::wstring& weekday : names.weekdays) EXPECT_NE(weekday, L"") << locale;
  }
  EXPECT_EQ(IcuCalendarNames(L"en-US").short_months, IcuCalendarNames(L"en").short_months);
  EXPECT_EQ(IcuCalendarNames(L"en-US").weekdays, IcuCalendarNames(L"en").weekdays);
  EXPECT_EQ(IcuCalendarNames(L"de-DE").months[2], L"M\u00E4rz");
  EXPECT_EQ(IcuCalendarNames(L"xx-XX").months[2], L"March");
}

}  // namespace
}  // namespace pxscheduler
