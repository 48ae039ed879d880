#include "data/rows/row_store.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>
#include <numeric>
#include <optional>
#include <random>
#include <string>
#include <variant>
#include <vector>

#include "platform/letter_case.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

using std::chrono::days;
using std::chrono::seconds;
using std::chrono::sys_days;

// Appends what a value holds.
struct Appender {
  RowStore& rows;

  void operator()(std::monostate) const { rows.AppendNull(); }
  void operator()(bool held) const { rows.AppendBool(held); }
  void operator()(std::int64_t held) const { rows.AppendInteger(held); }
  void operator()(float held) const { rows.AppendFloat(held); }
  void operator()(double held) const { rows.AppendDouble(held); }
  void operator()(const Decimal& held) const { rows.AppendDecimal(held.digits); }
  void operator()(const DateTime& held) const { rows.AppendDateTime(held); }
  void operator()(const std::wstring& held) const { rows.AppendText(ToUtf8(held)); }
};

std::vector<Value> SortedColumn(const std::vector<Value>& values) {
  RowStore rows{{L"Value"}};
  for (const Value& value : values) {
    std::visit(Appender{rows}, value);
    rows.EndRow();
  }
  rows.Sort(0);
  std::vector<Value> sorted;
  for (std::size_t row = 0; row < rows.RowCount(); ++row) sorted.push_back(rows.Read(row, 0));
  return sorted;
}

// A value of any type; texts and numbers often share a beginning or are equal but for case.
Value RandomValue(std::mt19937& random) {
  const auto below = [&random](std::uint32_t limit) {
    return static_cast<std::uint32_t>(random() % limit);
  };
  static constexpr std::wstring_view kLetters[] = {L"a", L"A", L"b",          L"B",      L"@",
                                                   L"É", L" ", L"é",          L".",      L"ß",
                                                   L"Σ", L"σ", L"\U0001F600", {L"\0", 1}};
  std::wstring text = below(2) == 1 ? L"client.of.the.agency" : L"";
  for (std::uint32_t length = below(8); length > 0; --length)
    text += kLetters[below(std::size(kLetters))];
  const Value values[] = {
      std::monostate{},
      below(2) == 1,
      static_cast<std::int64_t>(random() << below(31)) - (std::int64_t{1} << below(63)),
      static_cast<float>(below(1000)) / 8 - 60,
      (static_cast<double>(random()) - 2e9) * std::pow(10, static_cast<int>(below(40)) - 20),
      Decimal{(below(2) == 1 ? "-" : "") + std::to_string(random()) + "." +
              std::to_string(below(1000))},
      DateTime{sys_days{days{static_cast<int>(below(4000)) - 2000}},
               seconds{below(2) * below(86400)}},
      std::wstring(below(600), L'x'),
      text,
  };
  return values[std::min<std::size_t>(below(12), std::size(values) - 1)];
}

TEST(RowStoreTest, GivesBackWhatWasAppended) {
  std::mt19937 random{1};
  constexpr std::size_t kColumns = 7;
  RowStore rows{std::vector<std::wstring>(kColumns, L"c")};
  std::vector<Value> expected;
  for (int row = 0; row < 5000; ++row) {
    for (std::size_t column = 0; column < kColumns; ++column) {
      const bool is_huge = row == 2500 && column == 3;
      expected.push_back(is_huge ? std::wstring(3U << 20U, L't') : RandomValue(random));
      std::visit(Appender{rows}, expected.back());
    }
    rows.EndRow();
  }
  ASSERT_EQ(rows.RowCount(), 5000U);
  for (std::size_t cell = 0; cell < expected.size(); ++cell)
    ASSERT_EQ(rows.Read(cell / kColumns, cell % kColumns), expected[cell]) << cell;
}

TEST(RowStoreTest, SortsEachKindByItsValue) {
  using Integer = std::int64_t;
  const double infinity = std::numeric_limits<double>::infinity();
  std::vector<Value> ascending;
  ascending.insert(ascending.end(),
                   {std::monostate{}, -infinity, -1e300, INT64_MIN,
                    Decimal{"-9223372036854775807.5"}, Integer{-100}, Decimal{"-99.999"},
                    Integer{-10}, -9.5, Integer{-9}, -0.25F, -0.015, -1e-300, false});
  ascending.insert(ascending.end(),
                   {1e-300, 0.001, Decimal{"0.0011"}, 0.5F, Decimal{"0.75"}, true, Integer{9},
                    Integer{10}, 10.5, Integer{1} << 53, (Integer{1} << 53) + 1, INT64_MAX,
                    Decimal{"9223372036854775807.001"}, 1e19, infinity});
  ascending.insert(
      ascending.end(),
      {DateTime{sys_days{days{-40000}}, seconds{1}}, DateTime{sys_days{days{-1}}, seconds{86399}},
       DateTime{sys_days{days{0}}}, DateTime{sys_days{days{0}}, seconds{1}}});
  ascending.insert(ascending.end(), {L"", L"\t", L"A@example.org", L"a@example.orga",
                                     L"B@example.org", std::wstring{L"b@example.org\0", 14}, L"zoe",
                                     L"É", L"éa", L"\uFFFD", L"\U0001F600"});
  std::vector<Value> values = ascending;
  std::mt19937 random{2};
  for (int round = 0; round < 20; ++round) {
    std::shuffle(values.begin(), values.end(), random);
    EXPECT_EQ(SortedColumn(values), ascending) << round;
  }
}

// A plain stable sort of lower-case wide text is the reference.
TEST(RowStoreTest, SortsTextAsAPlainStableSortDoes) {
  std::mt19937 random{3};
  for (const std::size_t count : {0U, 1U, 2U, 1000U, 70000U}) {
    RowStore rows{{L"Number", L"Email"}};
    std::vector<std::wstring> emails;
    for (std::size_t row = 0; row < count; ++row) {
      const Value value = RandomValue(random);
      emails.push_back(std::holds_alternative<std::wstring>(value) ? std::get<std::wstring>(value)
                                                                   : L"Same@example.org");
      rows.AppendInteger(static_cast<std::int64_t>(row));
      rows.AppendText(ToUtf8(emails.back()));
      rows.EndRow();
    }
    std::vector<std::size_t> order(count);
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&](std::size_t left, std::size_t right) {
      return LowerCase(emails[left]) < LowerCase(emails[right]);
    });
    rows.Sort(0);
    rows.Sort(1);
    rows.Sort(1);
    for (std::size_t row = 0; row < count; ++row)
      ASSERT_EQ(rows.Read(row, 0), Value{static_cast<std::int64_t>(order[row])}) << row;
  }
}

TEST(RowStoreTest, FindsColumnsWithoutCase) {
  const RowStore rows{{L"Email", L"BirthDate", L"EMAIL", L"", L"Straße", L"Été", L"Eté"}};
  const struct {
    std::wstring name;
    std::optional<std::size_t> column;
  } cases[] = {{L"email", 0}, {L"Birthdate", 1}, {L"", 3},        {L"STRAßE", 4},  {L"éTÉ", 5},
               {L"ETÉ", 6},   {L"Emai", {}},     {L"Email ", {}}, {L"Straxe", {}}, {L"Ete", {}}};
  for (const auto& [name, column] : cases) EXPECT_EQ(rows.FindColumn(name), column) << name;
  EXPECT_EQ(RowStore{}.FindColumn(L"Email"), std::nullopt);
}

}  // namespace
}  // namespace pxscheduler
