#include "query/date_macros.h"

#include <gtest/gtest.h>

#include "platform/runtime_error.h"
#include "tests/support/fake_platform.h"

namespace pxscheduler {
namespace {

using namespace std::chrono_literals;
using std::chrono::sys_days;

class DateMacros : public testing::Test {
 protected:
  DateMacros() { Today(2026y / 11 / 16); }  // a Monday

  void Today(sys_days date) { system_.moment = {{date, 15h}, {}}; }
  std::wstring Expand(const std::wstring& sql) {
    return ExpandDateMacros(system_, regional_, ansi_, sql);
  }

  FakeSystem system_;
  Latin1CodePage ansi_;
  PictureRegional regional_ = EnglishRegional();
};

// A text that begins with a macro becomes its dates.
TEST_F(DateMacros, EveryMacroOnAPlainMonday) {
  const struct {
    const wchar_t* macro;
    const wchar_t* dates;
  } cases[] = {
      {L"[TODAY]", L"11/16/2026"},
      {L"[TOMORROW]", L"11/17/2026"},
      {L"[YESTERDAY]", L"11/15/2026"},
      {L"[THISWEEK]", L"11/15/2026 - 11/21/2026"},
      {L"[NEXTWEEK]", L"11/22/2026 - 11/28/2026"},
      {L"[LASTWEEK]", L"11/8/2026 - 11/14/2026"},
      {L"[NEXT7DAYS]", L"11/17/2026 - 11/23/2026"},
      {L"[NEXT14DAYS]", L"11/17/2026 - 11/30/2026"},
      {L"[NEXT30DAYS]", L"11/17/2026 - 12/16/2026"},
      {L"[LAST7DAYS]", L"11/9/2026 - 11/15/2026"},
      {L"[LAST14DAYS]", L"11/2/2026 - 11/15/2026"},
      {L"[LAST30DAYS]", L"10/17/2026 - 11/15/2026"},
      {L"[THISMONTH]", L"11/1/2026 - 11/30/2026"},
      {L"[NEXTMONTH]", L"12/1/2026 - 12/31/2026"},
      {L"[NEXT3MONTHS]", L"12/1/2026 - 2/28/2027"},
      {L"[NEXT6MONTHS]", L"12/1/2026 - 5/31/2027"},
      {L"[LASTMONTH]", L"10/1/2026 - 10/31/2026"},
      {L"[LAST3MONTHS]", L"8/1/2026 - 10/31/2026"},
      {L"[LAST6MONTHS]", L"5/1/2026 - 10/31/2026"},
      {L"[THISYEAR]", L"1/1/2026 - 12/31/2026"},
      {L"[NEXTYEAR]", L"1/1/2027 - 12/31/2027"},
      {L"[LASTYEAR]", L"1/1/2025 - 12/31/2025"},
      {L"[3 DAYS AGO]", L"11/13/2026"},
      {L"[3 DAYS FROM NOW]", L"11/19/2026"},
      {L"[2 WEEKS AGO]", L"11/2/2026"},
      {L"[2 WEEKS FROM NOW]", L"11/30/2026"},
      {L"[9 MONTHS AGO]", L"2/16/2026"},
      {L"[2 MONTHS FROM NOW]", L"1/16/2027"},
  };
  for (const auto& c : cases) EXPECT_EQ(Expand(c.macro), c.dates) << c.macro;
}

TEST_F(DateMacros, DaysOnWhichCalendarsGoWrong) {
  const struct {
    sys_days today;
    const wchar_t* macro;
    const wchar_t* dates;
  } cases[] = {
      // A month that is longer than the one that is counted to.
      {2024y / 1 / 31, L"[NEXTMONTH]", L"2/1/2024 - 2/29/2024"},
      {2026y / 3 / 31, L"[1 MONTHS AGO]", L"2/28/2026"},
      {2026y / 5 / 31, L"[LAST3MONTHS]", L"2/1/2026 - 4/30/2026"},
      // The leap day.
      {2024y / 2 / 29, L"[THISMONTH]", L"2/1/2024 - 2/29/2024"},
      {2024y / 2 / 29, L"[12 MONTHS FROM NOW]", L"2/28/2025"},
      // A Saturday, the last day of a week, and a Sunday, the first.
      {2026y / 11 / 21, L"[THISWEEK]", L"11/15/2026 - 11/21/2026"},
      {2026y / 11 / 21, L"[NEXTWEEK]", L"11/22/2026 - 11/28/2026"},
      {2026y / 11 / 22, L"[THISWEEK]", L"11/22/2026 - 11/28/2026"},
      {2026y / 11 / 22, L"[LASTWEEK]", L"11/15/2026 - 11/21/2026"},
      // The turn of the year.
      {2026y / 12 / 31, L"[THISWEEK]", L"12/27/2026 - 1/2/2027"},
      {2026y / 12 / 31, L"[NEXTMONTH]", L"1/1/2027 - 1/31/2027"},
      {2027y / 1 / 1, L"[LAST6MONTHS]", L"7/1/2026 - 12/31/2026"},
  };
  for (const auto& c : cases) {
    Today(c.today);
    EXPECT_EQ(Expand(c.macro), c.dates) << c.macro;
  }
}

TEST_F(DateMacros, FirstAndLastDaysAreThoseOfTheirRange) {
  const sys_days days[] = {2026y / 11 / 16, 2026y / 11 / 21, 2026y / 11 / 22, 2024y / 1 / 31,
                           2024y / 2 / 29,  2026y / 3 / 31,  2026y / 12 / 31, 2027y / 1 / 1};
  for (const sys_days today : days) {
    Today(today);
    for (const std::wstring which : {L"THIS", L"NEXT", L"LAST"}) {
      for (const std::wstring range : {L"WEEK", L"MONTH", L"YEAR"}) {
        const std::wstring rest = L" DAY OF " + which + L" " + range + L"]";
        EXPECT_EQ(Expand(L"[FIRST" + rest) + L" - " + Expand(L"[LAST" + rest),
                  Expand(L"[" + which + range + L"]"));
      }
    }
  }
}

TEST_F(DateMacros, TheColumnBeforeTheMacroSaysWhatItBecomes) {
  const struct {
    const wchar_t* sql;
    const wchar_t* expanded;
  } cases[] = {
      {L"SELECT * FROM Clients WHERE TravelDate=[TODAY]",
       L"SELECT * FROM Clients WHERE TravelDate='2026-11-16'"},
      {L"SELECT 1 WHERE TravelDate BETWEEN [TODAY] AND [TOMORROW]",
       L"SELECT 1 WHERE TravelDate BETWEEN '2026-11-16' AND '2026-11-17'"},
      {L"WHERE TravelDate>=[NEXT7DAYS]", L"WHERE TravelDate>='2026-11-17'"},
      {L"WHERE FirstDate=[2 WEEKS FROM NOW] OR LastDate=[TODAY]",
       L"WHERE FirstDate='2026-11-30' OR LastDate='2026-11-16'"},
      {L"WHERE ReturnDate=[TODAY] AND TravelDate<[TODAY]",
       L"WHERE ReturnDate='2026-11-16' AND TravelDate<'2026-11-16'"},
      {L"WHERE MONTH(Birthdate)*100+DAY(Birthdate) IN [NEXT7DAYS]",
       L"WHERE MONTH(Birthdate)*100+DAY(Birthdate) IN "
       L"(1117,1118,1119,1120,1121,1122,1123)"},
      {L"WHERE MONTH(AnniversaryDate)*100+DAY(AnniversaryDate) IN [TODAY] ORDER BY 1",
       L"WHERE MONTH(AnniversaryDate)*100+DAY(AnniversaryDate) IN (1116) ORDER BY 1"},
      // The nearest slice counts, and in it a birthday counts before a travel date.
      {L"WHERE TravelDate IS NULL AND Birthdate IN [TODAY]",
       L"WHERE TravelDate IS NULL AND Birthdate IN (1116)"},
      // A slice reaches past the macro: the column behind a short macro is seen as well.
      {L"WHERE x=[TODAY]LastDate", L"WHERE x='2026-11-16'LastDate"},
      // A number that stands for none, and one that rounds to the even neighbour.
      {L"WHERE TravelDate=[DAYS AGO]", L"WHERE TravelDate='2026-11-16'"},
      {L"WHERE TravelDate=[2.5 DAYS AGO]", L"WHERE TravelDate='2026-11-14'"},
      {L"WHERE TravelDate=[-1 DAYS AGO]", L"WHERE TravelDate='2026-11-17'"},
      // Without its bracket a numbered macro keeps the dates of the macro before it.
      {L"WHERE TravelDate=[TODAY] AND LastDate=3 DAYS AGO]",
       L"WHERE TravelDate='2026-11-16' AND LastDate=3 '2026-11-16'"},
      {L"SELECT 1 WHERE x=[today]", L"SELECT 1 WHERE x=[today]"},
      {L"", L""},
  };
  for (const auto& c : cases) EXPECT_EQ(Expand(c.sql), c.expanded) << c.sql;
}

TEST_F(DateMacros, ATextThatBeginsWithAMacroIsItsCaption) {
  EXPECT_EQ(Expand(L"[NEXT7DAYS] and whatever follows"), L"11/17/2026 - 11/23/2026");
  regional_ = GermanRegional();
  EXPECT_EQ(Expand(L"[THISMONTH]"), L"01.11.2026 - 30.11.2026");
}

TEST_F(DateMacros, AnEndDateStaysInForceForMacrosThatGiveNone) {
  EXPECT_EQ(Expand(L"WHERE TravelDate<[NEXT7DAYS] AND Birthdate IN [20 DAYS FROM NOW]"),
            L"WHERE TravelDate<'2026-11-17' AND Birthdate IN ()");
  EXPECT_EQ(Expand(L"WHERE TravelDate<[NEXT7DAYS] AND Birthdate IN [5 DAYS FROM NOW]"),
            L"WHERE TravelDate<'2026-11-17' AND Birthdate IN (1121,1122,1123)");
}

TEST_F(DateMacros, ListsRunOverTheTurnOfTheYear) {
  Today(2026y / 12 / 29);
  EXPECT_EQ(Expand(L"WHERE Birthdate IN [NEXT7DAYS]"),
            L"WHERE Birthdate IN (1230,1231,101,102,103,104,105)");
}

TEST_F(DateMacros, NumbersThatNoDateCanHold) {
  for (const wchar_t* macro : {L"[9999999999 DAYS AGO]", L"[3000000 DAYS FROM NOW]",
                               L"[2000000000 MONTHS AGO]", L"[99999 MONTHS FROM NOW]"})
    EXPECT_THROW(Expand(L"WHERE TravelDate=" + std::wstring{macro}), RuntimeError) << macro;
}

TEST_F(DateMacros, AMacroWithoutAColumnIsFoundAgainForEver) {
  for (const wchar_t* sql :
       {L"WHERE x=[TODAY]", L" [TODAY]", L"TravelDate BETWEEN '2026-11-16' AND [TOMORROW]"}) {
    DateMacroExpansion expansion{.text = sql, .start_date = {}, .end_date = {}};
    for (int step = 0; step < 3; ++step) {
      EXPECT_TRUE(ExpandNextDateMacro(system_, regional_, ansi_, expansion));
      EXPECT_EQ(expansion.text, sql);
    }
  }
}

TEST_F(DateMacros, AnniversariesAreConditionsForTheServer) {
  EXPECT_EQ(Expand(L"SELECT * FROM Clients WHERE 1=1 [1]"),
            L"SELECT * FROM Clients WHERE 1=1  AND ((MONTH(AnniversaryDate)<MONTH(GETDATE()) AND "
            L"DATEDIFF(YEAR,AnniversaryDate,GETDATE())=0) OR "
            L"(MONTH(AnniversaryDate)>=MONTH(GETDATE()) AND "
            L"DATEDIFF(YEAR,AnniversaryDate,GETDATE())=1))");
  const std::wstring both = Expand(L"1=1 [75][75]");
  EXPECT_EQ(both.find(L'['), std::wstring::npos);
  EXPECT_EQ(Expand(L"[2] [100] [5 ]"), L"[2] [100] [5 ]");
}

}  // namespace
}  // namespace pxscheduler
