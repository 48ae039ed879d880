#include "data/sqlite/sql_functions.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <exception>
#include <limits>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "data/sqlite/sql_conversion.h"
#include "data/sqlite/sql_token.h"
#include "data/sqlite/text_collation.h"
#include "platform/letter_case.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

using Arguments = std::vector<SqlValue>;
using SqlFunction = SqlValue (*)(const Arguments&);

constexpr std::int64_t kWholeText = std::numeric_limits<std::int32_t>::max();

bool IsNull(const SqlValue& value) { return std::holds_alternative<std::monostate>(value); }

SqlValue ValueOf(sqlite3_value* value) {
  switch (sqlite3_value_type(value)) {
    case SQLITE_INTEGER:
      return sqlite3_value_int64(value);
    case SQLITE_FLOAT:
      return sqlite3_value_double(value);
    case SQLITE_NULL:
      return std::monostate{};
    default: {
      const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(value));
      const int size = sqlite3_value_bytes(value);
      return text == nullptr ? std::string{} : std::string{text, static_cast<std::size_t>(size)};
    }
  }
}

void SetResult(sqlite3_context* context, const SqlValue& value) {
  if (const auto* integer = std::get_if<std::int64_t>(&value))
    sqlite3_result_int64(context, *integer);
  else if (const auto* number = std::get_if<double>(&value))
    sqlite3_result_double(context, *number);
  else if (const auto* text = std::get_if<std::string>(&value))
    sqlite3_result_text64(context, text->data(), text->size(), SQLITE_TRANSIENT, SQLITE_UTF8);
  else
    sqlite3_result_null(context);
}

// Runs what a callback does; nothing thrown passes through the engine.
template <typename Call>
void Guard(sqlite3_context* context, const Call& call) {
  try {
    call();
  } catch (const SqlFunctionError& error) {
    sqlite3_result_error(context, error.description.c_str(), -1);
  } catch (const std::exception&) {
    sqlite3_result_error_nomem(context);
  }
}

template <SqlFunction function>
void Call(sqlite3_context* context, int count, sqlite3_value** values) {
  Guard(context, [&] {
    Arguments arguments;
    for (int at = 0; at < count; ++at) arguments.push_back(ValueOf(values[at]));
    SetResult(context, function(arguments));
  });
}

std::wstring WideTextOf(const SqlValue& value) { return FromUtf8(SqlTextOf(value)); }

// The whole part of a number, Null counting as the default.
std::int64_t WholeOf(const SqlValue& value, std::int64_t when_null) {
  if (IsNull(value)) return when_null;
  return std::get<std::int64_t>(ConvertSqlValue(value, {"BIGINT", {}, {}}, {}));
}

std::optional<std::int64_t> OptionalWhole(const SqlValue& value) {
  return IsNull(value) ? std::nullopt : std::optional{WholeOf(value, 0)};
}

std::optional<SqlMoment> DateOf(const SqlValue& value) {
  const SqlValue date = ConvertSqlValue(value, {"DATETIME", {}, {}}, {});
  return IsNull(date) ? std::nullopt : ReadSqlDate(std::get<std::string>(date));
}

DatePart PartOf(const SqlValue& name, const char* function) {
  const std::string text = SqlTextOf(name);
  const std::optional<DatePart> part = DatePartNamed(text);
  if (!part) throw SqlFunctionError{"'" + text + "' is not a recognized " + function + " option."};
  return *part;
}

template <DatePart part>
SqlValue NumberOfPart(const Arguments& arguments) {
  const std::optional<SqlMoment> date = DateOf(arguments[0]);
  return date ? SqlValue{DatePartOf(part, *date)} : SqlValue{};
}

SqlValue DatePartFunction(const Arguments& arguments) {
  const DatePart part = PartOf(arguments[0], "datepart");
  const std::optional<SqlMoment> date = DateOf(arguments[1]);
  return date ? SqlValue{DatePartOf(part, *date)} : SqlValue{};
}

SqlValue DateDiff(const Arguments& arguments) {
  const DatePart part = PartOf(arguments[0], "datediff");
  const std::optional<SqlMoment> from = DateOf(arguments[1]);
  const std::optional<SqlMoment> to = DateOf(arguments[2]);
  if (!from || !to) return std::monostate{};
  const std::int64_t difference = DateDifference(part, *from, *to);
  if (difference != static_cast<std::int32_t>(difference))
    throw SqlFunctionError{
        "The datediff function resulted in an overflow. The number of dateparts separating two "
        "date/time instances is too large. Try to use datediff with a less precise datepart."};
  return difference;
}

SqlMoment RequireMoment(const std::optional<SqlMoment>& moment) {
  if (!moment) throw SqlFunctionError{"Adding a value to a 'datetime' column caused an overflow."};
  return *moment;
}

SqlValue DateAddFunction(const Arguments& arguments) {
  const DatePart part = PartOf(arguments[0], "dateadd");
  const std::optional<SqlMoment> date = DateOf(arguments[2]);
  if (!date || IsNull(arguments[1])) return std::monostate{};
  return WriteSqlMoment(RequireMoment(DateAdd(part, WholeOf(arguments[1], 0), *date)));
}

SqlValue IsNullFunction(const Arguments& arguments) {
  return IsNull(arguments[0]) ? arguments[1] : arguments[0];
}

SqlValue Length(const Arguments& arguments) {
  if (IsNull(arguments[0])) return {};
  const std::wstring text = WideTextOf(arguments[0]);
  return static_cast<std::int64_t>(text.find_last_not_of(L' ') + 1);
}

// Characters `start` (1-based, possibly before the text) to `start` + `length` - 1, as far as the
// text has them.
SqlValue Slice(const SqlValue& value, std::int64_t start, std::int64_t length) {
  if (length < 0)
    throw SqlFunctionError{"Invalid length parameter passed to the LEFT or SUBSTRING function."};
  const std::wstring text = WideTextOf(value);
  const std::int64_t end =
      std::min(start + std::min(length, kWholeText), static_cast<std::int64_t>(text.size()) + 1);
  const std::int64_t first = std::max(start, std::int64_t{1});
  if (end <= first) return std::string{};
  return ToUtf8(std::wstring_view{text}.substr(static_cast<std::size_t>(first - 1),
                                               static_cast<std::size_t>(end - first)));
}

SqlValue Substring(const Arguments& arguments) {
  if (std::any_of(arguments.begin(), arguments.end(), IsNull)) return {};
  const std::int64_t start = std::clamp(WholeOf(arguments[1], 0), -kWholeText, kWholeText);
  return Slice(arguments[0], start, WholeOf(arguments[2], 0));
}

SqlValue Left(const Arguments& arguments) {
  if (IsNull(arguments[0]) || IsNull(arguments[1])) return {};
  return Slice(arguments[0], 1, WholeOf(arguments[1], 0));
}

SqlValue Right(const Arguments& arguments) {
  if (IsNull(arguments[0]) || IsNull(arguments[1])) return {};
  const std::int64_t length = WholeOf(arguments[1], 0);
  if (length < 0) throw SqlFunctionError{"Invalid length parameter passed to the RIGHT function."};
  const auto size = static_cast<std::int64_t>(WideTextOf(arguments[0]).size());
  return Slice(arguments[0], std::max(size - length, std::int64_t{0}) + 1, length);
}

SqlValue CharIndex(const Arguments& arguments) {
  if (std::any_of(arguments.begin(), arguments.end(), IsNull)) return {};
  const std::wstring find = LowerCase(WideTextOf(arguments[0]));
  const std::wstring text = LowerCase(WideTextOf(arguments[1]));
  const std::int64_t start = arguments.size() > 2 ? WholeOf(arguments[2], 1) : 1;
  if (find.empty()) return std::int64_t{0};
  const std::size_t found =
      text.find(find, static_cast<std::size_t>(std::max(start - 1, std::int64_t{0})));
  return found == std::wstring::npos ? std::int64_t{0} : static_cast<std::int64_t>(found) + 1;
}

SqlValue Upper(const Arguments& arguments) {
  if (IsNull(arguments[0])) return {};
  return ToUtf8(UpperCase(WideTextOf(arguments[0])));
}

SqlValue Lower(const Arguments& arguments) {
  if (IsNull(arguments[0])) return {};
  return ToUtf8(LowerCase(WideTextOf(arguments[0])));
}

SqlValue Concat(const Arguments& arguments) {
  std::string text;
  for (const SqlValue& argument : arguments) text += SqlTextOf(argument);
  return text;
}

SqlValue Convert(const Arguments& arguments) {
  const SqlType type{SqlTextOf(arguments[0]), OptionalWhole(arguments[1]),
                     OptionalWhole(arguments[2])};
  return ConvertSqlValue(arguments[3], type, OptionalWhole(arguments[4]));
}

SqlValue Like(const Arguments& arguments) {
  if (std::any_of(arguments.begin(), arguments.end(), IsNull)) return {};
  const std::wstring escape = arguments.size() > 2 ? WideTextOf(arguments[2]) : L"";
  if (arguments.size() > 2 && escape.size() != 1)
    throw SqlFunctionError{"The invalid escape character \"" + SqlTextOf(arguments[2]) +
                           "\" was specified in a LIKE predicate."};
  return std::int64_t{MatchesSqlPattern(WideTextOf(arguments[1]), WideTextOf(arguments[0]),
                                        escape.empty() ? L'\0' : escape[0])};
}

// A text that is a number, as that number.
SqlValue NumberOf(const SqlValue& value) {
  const auto* text = std::get_if<std::string>(&value);
  if (text == nullptr) return value;
  std::int64_t whole = 0;
  const char* const end = text->data() + text->size();
  const auto result = std::from_chars(text->data(), end, whole);
  if (result.ec == std::errc{} && result.ptr == end) return whole;
  return ConvertSqlValue(value, {"FLOAT", {}, {}}, {});
}

double AsDouble(const SqlValue& number) {
  const auto* integer = std::get_if<std::int64_t>(&number);
  return integer != nullptr ? static_cast<double>(*integer) : std::get<double>(number);
}

SqlValue SumOf(const SqlValue& left, const SqlValue& right, int sign) {
  const SqlValue first = NumberOf(left);
  const SqlValue second = NumberOf(right);
  const auto* first_whole = std::get_if<std::int64_t>(&first);
  const auto* second_whole = std::get_if<std::int64_t>(&second);
  std::int64_t sum = 0;
  if (first_whole != nullptr && second_whole != nullptr &&
      !(sign > 0 ? __builtin_add_overflow(*first_whole, *second_whole, &sum)
                 : __builtin_sub_overflow(*first_whole, *second_whole, &sum)))
    return sum;
  return AsDouble(first) + sign * AsDouble(second);
}

SqlValue MoveByDays(SqlMoment date, const SqlValue& count) {
  const double moved = std::round(AsDouble(count) * 86400000);
  if (!(std::fabs(moved) < 9e15)) RequireMoment(std::nullopt);
  return WriteSqlMoment(
      RequireMoment(DateAdd(DatePart::kMillisecond, static_cast<std::int64_t>(moved), date)));
}

// The date that a text holds in the form of the engine's dates; other texts are no dates here.
std::optional<SqlMoment> StoredDate(const SqlValue& value) {
  const auto* text = std::get_if<std::string>(&value);
  if (text == nullptr || text->size() < 10 || (*text)[4] != '-') return std::nullopt;
  return ReadSqlDate(*text);
}

bool IsNumber(const SqlValue& value) {
  return std::holds_alternative<std::int64_t>(value) || std::holds_alternative<double>(value);
}

SqlValue Add(const Arguments& arguments) {
  const SqlValue& left = arguments[0];
  const SqlValue& right = arguments[1];
  if (IsNull(left) || IsNull(right)) return {};
  if (!IsNumber(left) && !IsNumber(right)) return SqlTextOf(left) + SqlTextOf(right);
  const std::optional<SqlMoment> left_date = StoredDate(left);
  if (left_date && IsNumber(right)) return MoveByDays(*left_date, right);
  const std::optional<SqlMoment> right_date = StoredDate(right);
  if (right_date && IsNumber(left)) return MoveByDays(*right_date, left);
  return SumOf(left, right, 1);
}

// The difference of two dates is a number of days here, a date of the year 1900 under SQL Server.
SqlValue Subtract(const Arguments& arguments) {
  const SqlValue& left = arguments[0];
  const SqlValue& right = arguments[1];
  if (IsNull(left) || IsNull(right)) return {};
  const std::optional<SqlMoment> left_date = StoredDate(left);
  if (left_date && IsNumber(right))
    return MoveByDays(*left_date, SumOf(std::int64_t{0}, right, -1));
  const std::optional<SqlMoment> right_date = StoredDate(right);
  if (left_date && right_date)
    return static_cast<double>((*left_date - *right_date).count()) / 86400000;
  return SumOf(left, right, -1);
}

void GetDate(sqlite3_context* context, int /*count*/, sqlite3_value** /*values*/) {
  Guard(context, [&] {
    const auto* now = static_cast<const SqlMoment*>(sqlite3_user_data(context));
    SetResult(context, WriteSqlMoment(*now));
  });
}

// The aggregate's memory, zero at first, holds a copy of the value from the first row on.
void OnlyValueStep(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
  auto** kept = static_cast<sqlite3_value**>(
      sqlite3_aggregate_context(context, static_cast<int>(sizeof(sqlite3_value*))));
  if (kept == nullptr) return sqlite3_result_error_nomem(context);
  if (*kept != nullptr)
    return sqlite3_result_error(
        context,
        "Subquery returned more than 1 value. This is not permitted when the subquery follows =, "
        "!=, <, <= , >, >= or when the subquery is used as an expression.",
        -1);
  *kept = sqlite3_value_dup(values[0]);
  if (*kept == nullptr) sqlite3_result_error_nomem(context);
}

void OnlyValueFinal(sqlite3_context* context) {
  auto** kept = static_cast<sqlite3_value**>(sqlite3_aggregate_context(context, 0));
  if (kept == nullptr || *kept == nullptr) return;
  sqlite3_result_value(context, *kept);
  sqlite3_value_free(*kept);
}

int Collate(void* /*unused*/, int left_size, const void* left, int right_size, const void* right) {
  return CompareSqlText({static_cast<const char*>(left), static_cast<std::size_t>(left_size)},
                        {static_cast<const char*>(right), static_cast<std::size_t>(right_size)});
}

int CollateOrdinal(void* /*unused*/, int left_size, const void* left, int right_size,
                   const void* right) {
  return std::string_view{static_cast<const char*>(left), static_cast<std::size_t>(left_size)}
      .compare({static_cast<const char*>(right), static_cast<std::size_t>(right_size)});
}

void AddCollation(void* /*unused*/, sqlite3* database, int /*encoding*/, const char* name) {
  const std::string upper = UpperAscii(name);
  const bool is_ordinal =
      upper.find("_CS") != std::string::npos || upper.find("_BIN") != std::string::npos;
  sqlite3_create_collation(database, name, SQLITE_UTF8, nullptr,
                           is_ordinal ? CollateOrdinal : Collate);
}

struct Registration {
  const char* name;
  int arguments;  // -1 for any number
  void (*call)(sqlite3_context*, int, sqlite3_value**);
};

constexpr Registration kFunctions[] = {
    {"GETDATE", 0, GetDate},
    {"YEAR", 1, Call<NumberOfPart<DatePart::kYear>>},
    {"MONTH", 1, Call<NumberOfPart<DatePart::kMonth>>},
    {"DAY", 1, Call<NumberOfPart<DatePart::kDay>>},
    {"DATEPART", 2, Call<DatePartFunction>},
    {"DATEDIFF", 3, Call<DateDiff>},
    {"DATEADD", 3, Call<DateAddFunction>},
    {"ISNULL", 2, Call<IsNullFunction>},
    {"LEN", 1, Call<Length>},
    {"SUBSTRING", 3, Call<Substring>},
    {"LEFT", 2, Call<Left>},
    {"RIGHT", 2, Call<Right>},
    {"CHARINDEX", 2, Call<CharIndex>},
    {"CHARINDEX", 3, Call<CharIndex>},
    {"UPPER", 1, Call<Upper>},
    {"LOWER", 1, Call<Lower>},
    {"CONCAT", -1, Call<Concat>},
    {"CONVERT", 5, Call<Convert>},
    {"LIKE", 2, Call<Like>},
    {"LIKE", 3, Call<Like>},
    {kSqlAdd, 2, Call<Add>},
    {kSqlSubtract, 2, Call<Subtract>},
};

}  // namespace

bool AddSqlFunctions(sqlite3* database, const SqlMoment* now) {
  // All of them, GETDATE too, give the same result throughout one statement, so the engine may call
  // them once instead of once a row.
  for (const auto& [name, arguments, call] : kFunctions)
    if (sqlite3_create_function(database, name, arguments, SQLITE_UTF8 | SQLITE_DETERMINISTIC,
                                const_cast<SqlMoment*>(now), call, nullptr, nullptr) != SQLITE_OK)
      return false;
  return sqlite3_create_function(database, kSqlOnlyValue, 1, SQLITE_UTF8, nullptr, nullptr,
                                 OnlyValueStep, OnlyValueFinal) == SQLITE_OK &&
         sqlite3_create_collation(database, kSqlCollation, SQLITE_UTF8, nullptr, Collate) ==
             SQLITE_OK &&
         sqlite3_collation_needed(database, nullptr, AddCollation) == SQLITE_OK;
}

}  // namespace pxscheduler
