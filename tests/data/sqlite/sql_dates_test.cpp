#include "data/sqlite/sql_dates.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "data/sqlite/sql_date_text.h"

namespace pxscheduler {
namespace {

SqlMoment At(const std::string& text) {
  const DateText read = ReadDateText(text);
  EXPECT_EQ(read.fault, DateTextFault::kNone) << text;
  return read.moment;
}

TEST(SqlDatesTest, ReadsDates) {
  const struct {
    std::string text;
    std::string written;
  } cases[] = {
      {"2026-11-16", "2026-11-16 00:00:00"},
      {" 2026-1-5 ", "2026-01-05 00:00:00"},
      {"20261116", "2026-11-16 00:00:00"},
      {"261116", "2026-11-16 00:00:00"},
      {"2026", "2026-01-01 00:00:00"},
      {"", "1900-01-01 00:00:00"},
      {"15:07", "1900-01-01 15:07:00"},
      {"3 PM", "1900-01-01 15:00:00"},
      {"20261116 15:07", "2026-11-16 15:07:00"},
      {"2026-11-16T15:07:41.25", "2026-11-16 15:07:41.250"},
      {"2026-11-16T15:07:41Z", "2026-11-16 15:07:41"},
      {"2026-11-16 15:07:41:5", "2026-11-16 15:07:41.005"},
      {"11/16/2026 3:07 PM", "2026-11-16 15:07:00"},
      {"1/2/2026 12:00am", "2026-01-02 00:00:00"},
      {"12/31/49", "2049-12-31 00:00:00"},
      {"12/31/50", "1950-12-31 00:00:00"},
      {"Nov 16, 2026", "2026-11-16 00:00:00"},
      {"16 november 2026 15:07", "2026-11-16 15:07:00"},
      {"16-Nov-26", "2026-11-16 00:00:00"},
      {"2026 Nov 16", "2026-11-16 00:00:00"},
      {"Nov 2026", "2026-11-01 00:00:00"},
      {"Nov 16 2026  3:07PM", "2026-11-16 15:07:00"},
      {"2024-02-29", "2024-02-29 00:00:00"},
      {"0001-01-01", "0001-01-01 00:00:00"},
  };
  for (const auto& [text, written] : cases) EXPECT_EQ(WriteSqlMoment(At(text)), written) << text;
  for (const char* text : {"2026-02-29", "0000-00-00", "16/11/2026", "2026-11-16 24:00",
                           "2026-11-16 13:00 PM", "16.11.2026", "11/31/2026"})
    EXPECT_EQ(ReadDateText(text).fault, DateTextFault::kOutOfRange) << text;
  for (const char* text : {"2026-11", "2026-11/16", "2026-11-16 3", "2026-11-16 x", "202611161",
                           "November", "Nov 16", "abc", "1", "Nov 16 2026 x"})
    EXPECT_EQ(ReadDateText(text).fault, DateTextFault::kNoDate) << text;
  EXPECT_TRUE(ReadDateText("2026-11-16 15:07:41.1234567").has_long_fraction);
  EXPECT_EQ(ReadDateText("16.11.2026", DateFieldOrder::kDayMonthYear).moment, At("2026-11-16"));
}

TEST(SqlDatesTest, ReadsWhatColumnsHold) {
  const SqlMoment afternoon = At("2026-11-16 15:07:41");
  for (const char* text :
       {"2026-11-16 15:07:41", "2026-11-16T15:07:41", "2026-11-16T15:07:41Z",
        "2026-11-16 15:07:41.0000000", "2026-11-16T15:07:41+01:00", "2026-11-16T15:07:41-0130"})
    EXPECT_EQ(ReadStoredDate(text), afternoon) << text;
  EXPECT_EQ(ReadStoredDate("2026-11-16  "), At("2026-11-16"));
  EXPECT_EQ(ReadStoredDate("2026-11-16 15:07"), At("2026-11-16 15:07"));
  for (const char* text : {"", "2026-02-30", "11/16/2026", "20261116", "2026-11-16 25:00",
                           "2026-11-16T15:07:41x", "2026-11-16 15:07:41.", "2026-11-16+"})
    EXPECT_EQ(ReadStoredDate(text), std::nullopt) << text;
}

TEST(SqlDatesTest, RoundsAsADateTime) {
  for (const auto& [given, rounded] : {std::pair{"00:00:00.001", "00:00:00"},
                                       {"00:00:00.002", "00:00:00.003"},
                                       {"00:00:00.005", "00:00:00.007"},
                                       {"00:00:00.008", "00:00:00.007"},
                                       {"23:59:59.998", "23:59:59.997"}})
    EXPECT_EQ(RoundedToDateTime(At(given)), At(rounded)) << given;
  EXPECT_EQ(WriteSqlMoment(RoundedToDateTime(At("2026-11-16 23:59:59.999"))),
            "2026-11-17 00:00:00");
}

TEST(SqlDatesTest, CountsBoundaries) {
  const struct {
    DatePart part;
    std::string from;
    std::string to;
    std::int64_t difference;
  } cases[] = {
      {DatePart::kYear, "2025-12-31 23:59:59", "2026-01-01", 1},
      {DatePart::kYear, "2026-01-01", "2026-12-31", 0},
      {DatePart::kYear, "2026-01-01", "1926-12-31", -100},
      {DatePart::kQuarter, "2026-03-31", "2026-04-01", 1},
      {DatePart::kMonth, "2026-01-31", "2026-02-01", 1},
      {DatePart::kMonth, "2026-03-01", "2024-02-29", -25},
      {DatePart::kDay, "2026-11-16 23:59:59", "2026-11-17 00:00:00", 1},
      {DatePart::kDayOfYear, "2026-11-17 00:00:00", "2026-11-16 23:59:59", -1},
      {DatePart::kWeek, "2026-11-14", "2026-11-15", 1},  // Saturday, Sunday
      {DatePart::kWeek, "2026-11-15", "2026-11-21", 0},
      {DatePart::kWeek, "1969-12-27", "1970-01-04", 2},
      {DatePart::kHour, "2026-11-16 10:59", "2026-11-16 11:00", 1},
      {DatePart::kMinute, "1960-01-01 10:59:59", "1960-01-01 11:00:00", 1},
      {DatePart::kSecond, "1960-01-01 00:00:00.999", "1960-01-01 00:00:01", 1},
      {DatePart::kMillisecond, "2026-11-16", "2026-11-16 00:00:00.010", 10},
  };
  for (const auto& [part, from, to, difference] : cases)
    EXPECT_EQ(DateDifference(part, At(from), At(to)), difference) << from << " " << to;
}

TEST(SqlDatesTest, AddsParts) {
  const struct {
    DatePart part;
    std::int64_t count;
    std::string from;
    std::string to;
  } cases[] = {
      {DatePart::kYear, 1, "2024-02-29 10:00:00", "2025-02-28 10:00:00"},
      {DatePart::kQuarter, -1, "2026-05-31", "2026-02-28 00:00:00"},
      {DatePart::kMonth, 1, "2026-01-31", "2026-02-28 00:00:00"},
      {DatePart::kMonth, -11, "2026-01-31", "2025-02-28 00:00:00"},
      {DatePart::kDay, -16, "2026-11-16", "2026-10-31 00:00:00"},
      {DatePart::kWeek, 2, "2026-12-31", "2027-01-14 00:00:00"},
      {DatePart::kHour, 25, "2026-11-16", "2026-11-17 01:00:00"},
      {DatePart::kSecond, -1, "1970-01-01", "1969-12-31 23:59:59"},
      {DatePart::kMillisecond, 5, "2026-11-16", "2026-11-16 00:00:00.005"},
      {DatePart::kYear, 8000, "2026-11-16", ""},
      {DatePart::kMonth, -9223372036854775807, "2026-11-16", ""},
      {DatePart::kWeek, 9223372036854775807, "2026-11-16", ""},
      {DatePart::kDay, 1, "9999-12-31", ""},
      {DatePart::kMonth, -1, "0001-01-31", ""},
  };
  for (const auto& [part, count, from, to] : cases) {
    const std::optional<SqlMoment> moment = DateAdd(part, count, At(from));
    EXPECT_EQ(moment ? WriteSqlMoment(*moment) : "", to) << count << " from " << from;
  }
}

TEST(SqlDatesTest, KnowsNamesOfParts) {
  const SqlMoment moment = At("2026-11-16 15:07:41.250");  // a Monday
  const struct {
    const char* names;
    std::int64_t value;
  } cases[] = {{"Year", 2026}, {"yy", 2026}, {"YYYY", 2026}, {"q", 4},   {"qq", 4},
               {"m", 11},      {"mm", 11},   {"dy", 320},    {"y", 320}, {"d", 16},
               {"dd", 16},     {"ww", 47},   {"wk", 47},     {"dw", 2},  {"hh", 15},
               {"n", 7},       {"mi", 7},    {"s", 41},      {"ss", 41}, {"ms", 250}};
  for (const auto& [name, value] : cases) {
    const std::optional<DatePart> part = DatePartNamed(name);
    ASSERT_TRUE(part) << name;
    EXPECT_EQ(DatePartOf(*part, moment), value) << name;
  }
  EXPECT_FALSE(DatePartNamed(""));
  EXPECT_FALSE(DatePartNamed("years"));
}

TEST(SqlDatesTest, WritesStyles) {
  const SqlMoment moment = At("2026-01-05 00:07:41.250");
  const struct {
    std::int64_t style;
    std::string text;
  } cases[] = {
      {1, "01/05/26"},       {101, "01/05/2026"}, {0, "Jan  5 2026 12:07AM"},
      {4, "05.01.26"},       {102, "2026.01.05"}, {20, "2026-01-05 00:07:41"},
      {108, "00:07:41"},     {103, "05/01/2026"}, {121, "2026-01-05 00:07:41.250"},
      {112, "20260105"},     {104, "05.01.2026"}, {126, "2026-01-05T00:07:41.250"},
      {107, "Jan 05, 2026"},
  };
  for (const auto& [style, text] : cases) EXPECT_EQ(WriteSqlDateInStyle(moment, style), text);
  for (const std::int64_t style : {-1, 9, 99, 999})
    EXPECT_EQ(WriteSqlDateInStyle(moment, style), std::nullopt) << style;
}

}  // namespace
}  // namespace pxscheduler
