#include "data/value.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "tests/support/fake_platform.h"
#include "tests/support/raised_by.h"

namespace pxscheduler {
namespace {

using std::chrono::hours;
using std::chrono::sys_days;
using std::chrono::year;

TEST(ValueTest, BecomesText) {
  const PictureRegional regional = EnglishRegional();
  const struct {
    Value value;
    std::wstring text;
  } cases[] = {
      {std::monostate{}, L""},
      {true, L"True"},
      {false, L"False"},
      {std::numeric_limits<std::int64_t>::min(), L"-9223372036854775808"},
      {0.1F, L"0.1"},
      {1234567.0F, L"1234567"},
      {12345678.0F, L"1.234568E+07"},
      {0.1, L"0.1"},
      {1.0 / 3, L"0.333333333333333"},
      {-2.50, L"-2.5"},
      {-0.0, L"0"},
      {123456789012345.0, L"123456789012345"},
      {1e15, L"1E+15"},
      {0.0001, L"0.0001"},
      {0.000015, L"1.5E-05"},
      {-1.25e-300, L"-1.25E-300"},
      {Decimal{"12345678901234567890.1234"}, L"12345678901234567890.1234"},
      {Decimal{"12.5000"}, L"12.5"},
      {Decimal{"100"}, L"100"},
      {Decimal{"-0.00"}, L"0"},
      {DateTime{sys_days{year{1970} / 5 / 12}}, L"5/12/1970"},
      {DateTime{sys_days{year{2026} / 11 / 16}, hours{15}}, L"11/16/2026 3:00:00 PM"},
      {std::wstring{L"a\0b", 3}, std::wstring{L"a\0b", 3}},
  };
  for (const auto& [value, text] : cases) EXPECT_EQ(TextOf(regional, value), text);
}

TEST(ValueTest, CountsAsTrueUnlessZeroOrNull) {
  const std::vector<Value> true_values = {
      true, std::int64_t{-1}, 0.25F, -1e-300, Decimal{"0.01"}, DateTime{}, L" tRUE ", L"2"};
  for (const Value& value : true_values) EXPECT_TRUE(IsTrue(value)) << value.index();
  const std::vector<Value> false_values = {std::monostate{}, false,    std::int64_t{0}, 0.0F, -0.0,
                                           Decimal{"-0.00"}, L"False", L"0.0"};
  for (const Value& value : false_values) EXPECT_FALSE(IsTrue(value)) << value.index();
}

TEST(ValueTest, ReadsABooleanFromText) {
  for (const wchar_t* text : {L"True", L"-1", L" 1 ", L"+0.5", L".5", L"1E3", L"1.", L"1d-2"})
    EXPECT_TRUE(BooleanFromText(text)) << text;
  for (const wchar_t* text : {L"false", L"0", L"-0.0", L"0E5", L"1E-999"})
    EXPECT_FALSE(BooleanFromText(text)) << text;
  for (const wchar_t* text : {L"", L" ", L"yes", L"Truey", L"1x", L"1 2", L"-", L".", L"1E", L"E1"})
    EXPECT_EQ(RaisedBy([&] { BooleanFromText(text); }).number, 13) << text;
  EXPECT_EQ(RaisedBy([] { BooleanFromText(L"1E999"); }).number, 6);
}

TEST(ValueTest, ReadsTheNumberAtTheStartOfAText) {
  const struct {
    std::wstring text;
    double number;
  } cases[] = {
      {L"", 0},       {L"abc", 0},     {L" 25 ", 25},  {L"2 5", 25},  {L"- 1 0.5x", -10.5},
      {L"+7", 7},     {L"3.4.5", 3.4}, {L".5", 0.5},   {L"1,000", 1}, {L"1e3", 1000},
      {L"1E+", 1},    {L"2D2", 200},   {L"1E-999", 0}, {L"--5", 0},   {L"587/tcp", 587},
      {L"0.0000", 0}, {L"4\u0665", 4},
  };
  for (const auto& [text, number] : cases) EXPECT_EQ(LeadingNumber(text), number) << text;
  EXPECT_EQ(RaisedBy([] { LeadingNumber(L"1E999"); }).number, 6);
  EXPECT_EQ(RaisedBy([] { LeadingNumber(std::wstring(400, L'9')); }).number, 6);
  EXPECT_EQ(LeadingNumber(L"0." + std::wstring(400, L'0') + L"1"), 0);
}

TEST(ValueTest, RoundsHalvesToTheEvenNeighbour) {
  const struct {
    double number;
    std::int32_t whole;
  } cases[] = {
      {0.5, 0}, {1.5, 2}, {2.5, 2}, {-0.5, 0}, {-1.5, -2}, {-2.5, -2}, {2.4999, 2}, {2.5001, 3},
  };
  for (const auto& [number, whole] : cases) EXPECT_EQ(ToWholeNumber(number), whole) << number;
  EXPECT_EQ(ToWholeNumber(2147483646.5), 2147483646);
  EXPECT_EQ(ToWholeNumber(-2147483648.5), INT32_MIN);
  for (const double number : {2147483647.5, -2147483649.0, 1e300, std::nan("")})
    EXPECT_EQ(RaisedBy([&] { ToWholeNumber(number); }).number, 6) << number;
}

}  // namespace
}  // namespace pxscheduler
