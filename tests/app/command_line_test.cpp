#include "app/command_line.h"

#include <gtest/gtest.h>

#include "tests/support/fake_platform.h"

namespace pxscheduler {
namespace {

TEST(ParseCommandLine, ValuesRunToTheNextBlankAndSlash) {
  const struct {
    const wchar_t* command_line;
    CommandLine switches;
  } cases[] = {
      {L"/Ujsmith /QBirthday clients /SHappy birthday /FC:\\t\\b.qzw",
       {L"Birthday clients", L"Happy birthday", L"C:\\t\\b.qzw", L"jsmith"}},
      {L"/qWeekly /sNews /fC:\\t\\news.qzw", {L"Weekly", L"News", L"C:\\t\\news.qzw", L""}},
      {L"/Q My Query  /S Hello there /F x.qzw", {L"My Query", L"Hello there", L"x.qzw", L""}},
      {L"/QA/B /Sx /Fy", {L"A/B", L"x", L"y", L""}},
      {L"/SNews /Update /Qq /Fb", {L"q", L"News", L"b", L"pdate"}},
      {L"/Qone /Qtwo /Sx /Fy", {L"one", L"x", L"y", L""}},
      {L"/Q /Sx /F\"y\"", {L"", L"x", L"\"y\"", L""}},
      {L"/Qa\t/Sx /Fy", {L"a\t/Sx", L"", L"y", L""}},
      {L"/S/Qa /Fy", {L"", L"/Qa", L"y", L""}},
      {L"/Q\u0141 /S\u00df /F", {L"?", L"\u00df", L"", L""}},
      {L"", {}},
  };
  const Latin1CodePage ansi;
  for (const auto& c : cases) {
    const CommandLine parsed = ParseCommandLine(ansi, c.command_line);
    EXPECT_EQ(parsed.query_name, c.switches.query_name) << c.command_line;
    EXPECT_EQ(parsed.subject, c.switches.subject) << c.command_line;
    EXPECT_EQ(parsed.body_file, c.switches.body_file) << c.command_line;
    EXPECT_EQ(parsed.user_login, c.switches.user_login) << c.command_line;
  }
}

}  // namespace
}  // namespace pxscheduler
