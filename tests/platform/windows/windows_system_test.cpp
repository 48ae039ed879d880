#include "platform/windows/windows_system.h"

#include <gtest/gtest.h>
#include <windows.h>

#include "platform/runtime_error.h"
#include "platform/windows/windows_regional.h"

namespace pxscheduler {
namespace {

TEST(WindowsCommandLine, BeginsBehindTheNameOfTheExecutable) {
  const struct {
    const wchar_t* whole;
    const wchar_t* arguments;
  } cases[] = {
      {L"\"C:\\Program Files\\PXScheduler.exe\" /Ujsmith /S\"a  b\"", L"/Ujsmith /S\"a  b\""},
      {L"PXScheduler /QBirthday clients ", L"/QBirthday clients "},
      {L"\"C:\\x.exe\"", L""},
      {L"C:\\x.exe", L""},
      {L"C:\\x.exe   \t/NOLOG", L"/NOLOG"},
      {L"\"C:\\no end /Q", L""},
      {L"", L""},
  };
  for (const auto& c : cases) EXPECT_EQ(ArgumentsOf(c.whole), c.arguments) << c.whole;
}

TEST(WindowsSystem, TellsOfTheProcess) {
  const WindowsSystem system([]() -> const CodePage& { throw RuntimeError{}; });
  EXPECT_TRUE(system.TemporaryFolder().ends_with(L'\\'));
  EXPECT_FALSE(system.ProgramFolder().ends_with(L'\\'));
  EXPECT_NE(system.FirstEntry(system.ProgramFolder() + L"\\*_test.exe"), L"");
  ::SetEnvironmentVariableW(L"PXSCHEDULER_TEST", L"caf\u00E9");
  EXPECT_EQ(system.EnvironmentVariable(L"PXSCHEDULER_TEST"), L"caf\u00E9");
  EXPECT_EQ(system.EnvironmentVariable(L"PXSCHEDULER_NONE"), L"");
  EXPECT_GE(system.OsMajorVersion().value_or(0), 5);
}

TEST(WindowsSystem, HearsThatTheSessionEnds) {
  WindowsSystem system([]() -> const CodePage& { throw RuntimeError{}; });
  system.HoldStopRequests();
  EXPECT_EQ(system.StopStatus(), std::nullopt);
  const HWND window = ::FindWindowW(L"PXScheduler stop requests", nullptr);
  ASSERT_NE(window, nullptr);
  EXPECT_NE(::SendMessageW(window, WM_QUERYENDSESSION, 0, 0), 0);
  EXPECT_EQ(system.StopStatus(), 143);
}

TEST(WindowsRegional, NamesMonthsAndDays) {
  const RegionalSettings settings = WindowsRegionalSettings();
  EXPECT_NE(settings.short_date.find(L'M'), std::wstring::npos);
  EXPECT_NE(settings.long_time.find(L"mm"), std::wstring::npos);
  const CalendarNames names = settings.names();
  EXPECT_EQ(names.months[0], L"January");
  EXPECT_EQ(names.months_of_dates[10], L"November");
  EXPECT_EQ(names.short_months[11], L"Dec");
  EXPECT_EQ(names.weekdays[0], L"Sunday");
  EXPECT_EQ(names.short_weekdays[6], L"Sat");
}

}  // namespace
}  // namespace pxscheduler
