#include "data/sqlite/sql_functions.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "data/sqlite/sql_conversion.h"
#include "data/sqlite/sql_date_text.h"
#include "data/sqlite/sql_dates.h"
#include "data/sqlite/text_collation.h"
#include "platform/letter_case.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

using Arguments = std::vector<SqlValue>;
using SqlFunction = SqlValue (*)(const Arguments&);

constexpr std::int64_t kLongestText = 8000;  // that a function makes longer than its arguments

bool IsNull(const SqlValue& value) { return std::holds_alternative<std::monostate>(value); }

std::string_view TextIn(sqlite3_value* value) {
  const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(value));
  if (text == nullptr) return {};
  return {text, static_cast<std::size_t>(sqlite3_value_bytes(value))};
}

SqlValue ValueOf(sqlite3_value* value) {
  switch (sqlite3_value_type(value)) {
    case SQLITE_INTEGER:
      return sqlite3_value_int64(value);
    case SQLITE_FLOAT:
      return sqlite3_value_double(value);
    case SQLITE_NULL:
      return std::monostate{};
    default:
      return std::string{TextIn(value)};
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

// Of a function that gives Null for any Null.
template <SqlFunction function>
void Call(sqlite3_context* context, int count, sqlite3_value** values) {
  Guard(context, [&] {
    Arguments arguments;
    arguments.reserve(static_cast<std::size_t>(count));
    for (int at = 0; at < count; ++at) {
      arguments.push_back(ValueOf(values[at]));
      if (IsNull(arguments.back())) return sqlite3_result_null(context);
    }
    SetResult(context, function(arguments));
  });
}

// The writer of statements has converted each argument to what its function takes.
std::int64_t WholeAt(const Arguments& arguments, std::size_t at) {
  const auto* integer = std::get_if<std::int64_t>(&arguments[at]);
  return integer != nullptr ? *integer : static_cast<std::int64_t>(std::get<double>(arguments[at]));
}

double NumberAt(const Arguments& arguments, std::size_t at) {
  const auto* integer = std::get_if<std::int64_t>(&arguments[at]);
  return integer != nullptr ? static_cast<double>(*integer) : std::get<double>(arguments[at]);
}

std::wstring TextAt(const Arguments& arguments, std::size_t at) {
  return FromUtf8(std::get<std::string>(arguments[at]));
}

SqlKind KindAt(const Arguments& arguments, std::size_t at) {
  return static_cast<SqlKind>(WholeAt(arguments, at));
}

DatePart PartAt(const Arguments& arguments, std::size_t at) {
  return static_cast<DatePart>(WholeAt(arguments, at));
}

SqlMoment DateAt(const Arguments& arguments, std::size_t at) {
  return MomentAt(WholeAt(arguments, at));
}

// Dates

SqlMoment DateInValue(sqlite3_value* value, SqlKind kind) {
  const int type = sqlite3_value_type(value);
  if (type == SQLITE_INTEGER || type == SQLITE_FLOAT)
    throw SqlFunctionError{"A date column holds the number " + std::string{TextIn(value)} +
                               ", which may count days or seconds: store dates as text, for "
                               "instance 2026-11-16.",
                           241};
  return DateInColumn(TextIn(value), kind);
}

// px_moment(column, kind)
void Moment(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
  Guard(context, [&] {
    if (sqlite3_value_type(values[0]) == SQLITE_NULL) return;
    const auto kind = static_cast<SqlKind>(sqlite3_value_int(values[1]));
    sqlite3_result_int64(context, MillisecondsOf(DateInValue(values[0], kind)));
  });
}

// px_canon(column, kind): the form in which equal dates are equal texts; what is no date stays as
// it is.
void Canonical(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
  Guard(context, [&] {
    const bool is_text = sqlite3_value_type(values[0]) == SQLITE_TEXT;
    if (is_text && ReadStoredDate(TextIn(values[0]))) {
      const auto kind = static_cast<SqlKind>(sqlite3_value_int(values[1]));
      SetResult(context, WriteSqlMoment(DateInColumn(TextIn(values[0]), kind)));
    } else {
      sqlite3_result_value(context, values[0]);
    }
  });
}

SqlValue DateText(const Arguments& arguments) { return WriteSqlMoment(DateAt(arguments, 0)); }

// px_day(moment, days): the day so many days later, as a text that sorts before all moments of it.
SqlValue DayText(const Arguments& arguments) {
  const std::optional<SqlMoment> day =
      DateAdd(DatePart::kDay, WholeAt(arguments, 1), DateAt(arguments, 0));
  return day ? WriteSqlDay(*day) : std::string{":"};  // sorts after all days
}

SqlValue DatePartNumber(const Arguments& arguments) {
  return DatePartOf(PartAt(arguments, 0), DateAt(arguments, 1));
}

SqlValue DateName(const Arguments& arguments) {
  const DatePart part = PartAt(arguments, 0);
  const std::int64_t number = DatePartOf(part, DateAt(arguments, 1));
  if (part == DatePart::kMonth) return std::string{EnglishMonth(static_cast<unsigned>(number))};
  if (part == DatePart::kWeekday) return std::string{EnglishWeekday(static_cast<unsigned>(number))};
  return std::to_string(number);
}

SqlValue DateDiff(const Arguments& arguments) {
  const std::int64_t difference =
      DateDifference(PartAt(arguments, 0), DateAt(arguments, 1), DateAt(arguments, 2));
  if (difference != static_cast<std::int32_t>(difference))
    throw SqlFunctionError{
        "The datediff function resulted in an overflow. The number of dateparts separating two "
        "date/time instances is too large. Try to use datediff with a less precise datepart.",
        535};
  return difference;
}

SqlValue MovedDate(const std::optional<SqlMoment>& moment, SqlKind kind) {
  if (!moment || (kind == SqlKind::kDateTime && *moment < kFirstDateTime))
    throw SqlFunctionError{
        "Adding a value to a '" + std::string{NameOf(kind)} + "' column caused an overflow.", 517};
  return MillisecondsOf(kind == SqlKind::kDateTime ? RoundedToDateTime(*moment) : *moment);
}

// px_dateadd(part, count, moment, kind)
SqlValue DateAddFunction(const Arguments& arguments) {
  return MovedDate(DateAdd(PartAt(arguments, 0), WholeAt(arguments, 1), DateAt(arguments, 2)),
                   KindAt(arguments, 3));
}

// px_eomonth(moment, months)
SqlValue EndOfMonth(const Arguments& arguments) {
  std::optional<SqlMoment> moment =
      DateAdd(DatePart::kMonth, WholeAt(arguments, 1), DateAt(arguments, 0));
  if (moment) {
    const std::chrono::year_month_day date{std::chrono::floor<std::chrono::days>(*moment)};
    moment = std::chrono::sys_days{date.year() / date.month() / std::chrono::last};
  }
  return MovedDate(moment, SqlKind::kDate);
}

SqlValue DateFromParts(const Arguments& arguments) {
  const std::int64_t year = WholeAt(arguments, 0);
  const std::int64_t month = WholeAt(arguments, 1);
  const std::int64_t day = WholeAt(arguments, 2);
  const auto is_small = [](std::int64_t number, std::int64_t most) {
    return number >= 1 && number <= most;
  };
  const std::chrono::year_month_day date{std::chrono::year{static_cast<int>(year)},
                                         std::chrono::month{static_cast<unsigned>(month)},
                                         std::chrono::day{static_cast<unsigned>(day)}};
  if (!is_small(year, 9999) || !is_small(month, 12) || !is_small(day, 31) || !date.ok())
    throw SqlFunctionError{
        "Cannot construct data type date, some of the arguments have values which are not valid.",
        289};
  return MillisecondsOf(std::chrono::sys_days{date});
}

template <typename Attempt>
SqlValue Succeeds(const Attempt& attempt) {
  try {
    attempt();
    return std::int64_t{1};
  } catch (const SqlFunctionError&) {
    return std::int64_t{0};
  }
}

SqlValue IsDate(const Arguments& arguments) {
  const auto& text = std::get<std::string>(arguments[0]);
  if (text.find_first_not_of(' ') == std::string::npos) return std::int64_t{0};
  return Succeeds([&] { DateOfText(text, SqlKind::kDateTime, 0); });
}

SqlValue IsNumeric(const Arguments& arguments) {
  const auto& text = std::get<std::string>(arguments[0]);
  if (text.find_first_not_of(' ') == std::string::npos) return std::int64_t{0};
  return Succeeds([&] { ConvertToKind(text, SqlKind::kText, SqlKind::kFloat); });
}

// px_cast(value, from, to, name, length, scale, style), with -2 for a length and -1 for a style
// that are not given.
void Cast(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
  Guard(context, [&] {
    const auto from = static_cast<SqlKind>(sqlite3_value_int(values[1]));
    SqlType type{static_cast<SqlKind>(sqlite3_value_int(values[2])), std::string{TextIn(values[3])},
                 sqlite3_value_int64(values[4]), sqlite3_value_int64(values[5])};
    if (*type.length < SqlType::kMaximum) type.length.reset();
    std::optional<std::int64_t> style = sqlite3_value_int64(values[6]);
    if (*style < 0) style.reset();
    SetResult(context, ConvertSqlValue(ValueOf(values[0]), from, type, style));
  });
}

// px_as(value, from, to): what meets a value of another kind.
void As(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
  Guard(context, [&] {
    SetResult(context,
              ConvertToKind(ValueOf(values[0]), static_cast<SqlKind>(sqlite3_value_int(values[1])),
                            static_cast<SqlKind>(sqlite3_value_int(values[2]))));
  });
}

// Numbers

std::int64_t WholeResult(SqlKind kind, std::int64_t number, bool has_overflowed) {
  const bool is_int = kind < SqlKind::kBigInt;
  if (has_overflowed || (is_int && number != static_cast<std::int32_t>(number)))
    throw SqlFunctionError{
        std::string{"Arithmetic overflow error converting expression to data type "} +
            (is_int ? "int." : "bigint."),
        8115};
  return number;
}

[[noreturn]] void RaiseDivision() {
  throw SqlFunctionError{"Divide by zero error encountered.", 8134};
}

SqlValue WholeOperation(char operation, SqlKind kind, std::int64_t left, std::int64_t right) {
  std::int64_t result = 0;
  switch (operation) {
    case '&':
      return left & right;
    case '|':
      return left | right;
    case '^':
      return left ^ right;
    default:
      break;
  }
  bool has_overflowed = false;
  if (operation == '+') {
    has_overflowed = __builtin_add_overflow(left, right, &result);
  } else if (operation == '-') {
    has_overflowed = __builtin_sub_overflow(left, right, &result);
  } else if (operation == '*') {
    has_overflowed = __builtin_mul_overflow(left, right, &result);
  } else {
    if (right == 0) RaiseDivision();
    has_overflowed = right == -1 && left == std::numeric_limits<std::int64_t>::min();
    if (!has_overflowed) result = operation == '/' ? left / right : left % right;
  }
  return WholeResult(kind, result, has_overflowed);
}

SqlValue RealOperation(char operation, SqlKind kind, double left, double right) {
  double result = 0;
  if ((operation == '/' || operation == '%') && right == 0) RaiseDivision();
  switch (operation) {
    case '+':
      result = left + right;
      break;
    case '-':
      result = left - right;
      break;
    case '*':
      result = left * right;
      break;
    case '/':
      result = left / right;
      break;
    default:
      result = std::fmod(left, right);
  }
  if (!std::isfinite(result))
    throw SqlFunctionError{"Arithmetic overflow error converting expression to data type " +
                               std::string{NameOf(kind)} + ".",
                           8115};
  if (kind == SqlKind::kFloat) return result;
  return ConvertSqlValue(result, SqlKind::kFloat, {SqlKind::kMoney, "", {}, 0}, std::nullopt);
}

// px_operate(operation, kind, left, right); dates are moved by the days since 1900 of the other
// side.
SqlValue Operate(const Arguments& arguments) {
  const char operation = std::get<std::string>(arguments[0])[0];
  const SqlKind kind = KindAt(arguments, 1);
  if (kind == SqlKind::kDateTime) {
    const std::int64_t moved = WholeAt(arguments, 3) - MillisecondsOf(kFirstDay);
    return MovedDate(
        DateAdd(DatePart::kMillisecond, operation == '+' ? moved : -moved, DateAt(arguments, 2)),
        kind);
  }
  if (kind <= SqlKind::kBigInt)
    return WholeOperation(operation, kind, WholeAt(arguments, 2), WholeAt(arguments, 3));
  if (kind == SqlKind::kMoney || kind == SqlKind::kFloat)
    return RealOperation(operation, kind, NumberAt(arguments, 2), NumberAt(arguments, 3));
  const auto* left = std::get_if<std::int64_t>(&arguments[2]);
  const auto* right = std::get_if<std::int64_t>(&arguments[3]);
  std::int64_t whole = 0;
  if (left != nullptr && right != nullptr &&
      ((operation == '+' && !__builtin_add_overflow(*left, *right, &whole)) ||
       (operation == '-' && !__builtin_sub_overflow(*left, *right, &whole)) ||
       (operation == '*' && !__builtin_mul_overflow(*left, *right, &whole))))
    return whole;
  return RealOperation(operation, SqlKind::kFloat, NumberAt(arguments, 2), NumberAt(arguments, 3));
}

// px_compare(left, right): negative, 0 or positive, by what the values are.
SqlValue Compare(const Arguments& arguments) {
  return std::int64_t{CompareSqlValues(arguments[0], arguments[1])};
}

// px_round(number, places, truncates)
SqlValue Round(const Arguments& arguments) {
  const auto places = static_cast<double>(std::clamp<std::int64_t>(WholeAt(arguments, 1), -18, 18));
  const double unit = std::pow(10.0, places);
  const double scaled = NumberAt(arguments, 0) * unit;
  const double hair = scaled * std::numeric_limits<double>::epsilon();
  const double rounded =
      (WholeAt(arguments, 2) != 0 ? std::trunc(scaled + hair) : std::round(scaled + hair)) / unit;
  const bool is_whole = std::holds_alternative<std::int64_t>(arguments[0]);
  return is_whole ? SqlValue{static_cast<std::int64_t>(rounded)} : SqlValue{rounded};
}

SqlValue Floor(const Arguments& arguments) {
  if (std::holds_alternative<std::int64_t>(arguments[0])) return arguments[0];
  return std::floor(NumberAt(arguments, 0));
}

SqlValue Ceiling(const Arguments& arguments) {
  if (std::holds_alternative<std::int64_t>(arguments[0])) return arguments[0];
  return std::ceil(NumberAt(arguments, 0));
}

// px_power(number, exponent, kind)
SqlValue Power(const Arguments& arguments) {
  const SqlKind kind = KindAt(arguments, 2);
  const double result = std::pow(NumberAt(arguments, 0), NumberAt(arguments, 1));
  if (std::isnan(result))
    throw SqlFunctionError{"An invalid floating point operation occurred.", 3623};
  if (kind > SqlKind::kBigInt && std::isfinite(result)) return result;
  return ConvertToKind(result, SqlKind::kFloat, kind > SqlKind::kBigInt ? SqlKind::kInt : kind);
}

SqlValue Sign(const Arguments& arguments) {
  const double number = NumberAt(arguments, 0);
  return std::int64_t{number > 0} - std::int64_t{number < 0};
}

SqlValue Str(const Arguments& arguments) {
  const std::int64_t length = WholeAt(arguments, 1);
  const std::int64_t decimals = std::clamp<std::int64_t>(WholeAt(arguments, 2), 0, 16);
  if (length < 0 || length > kLongestText) return {};
  std::array<char, 512> buffer{};
  const int written = std::snprintf(buffer.data(), buffer.size(), "%.*f",
                                    static_cast<int>(decimals), NumberAt(arguments, 0));
  std::string text{buffer.data(), static_cast<std::size_t>(written)};
  const auto width = static_cast<std::size_t>(length);
  if (text.find('.') != std::string::npos && text.size() > width && text.find('.') <= width)
    text.resize(width);
  if (text.size() > width) return std::string(width, '*');
  return std::string(width - text.size(), ' ') + text;
}

// Texts

SqlValue Length(const Arguments& arguments) {
  return static_cast<std::int64_t>(TextAt(arguments, 0).find_last_not_of(L' ') + 1);
}

[[noreturn]] void RaiseLength(const char* function) {
  throw SqlFunctionError{
      "Invalid length parameter passed to the " + std::string{function} + " function.", 537};
}

// Characters `start` (1-based, possibly before the text) to `start` + `length` - 1, as far as the
// text has them.
SqlValue Slice(std::wstring_view text, std::int64_t start, std::int64_t length) {
  if (length < 0) RaiseLength("LEFT or SUBSTRING");
  const std::int64_t end = std::min(start + length, static_cast<std::int64_t>(text.size()) + 1);
  const std::int64_t first = std::max(start, std::int64_t{1});
  if (end <= first) return std::string{};
  return ToUtf8(
      text.substr(static_cast<std::size_t>(first - 1), static_cast<std::size_t>(end - first)));
}

SqlValue Substring(const Arguments& arguments) {
  return Slice(TextAt(arguments, 0), WholeAt(arguments, 1), WholeAt(arguments, 2));
}

SqlValue Left(const Arguments& arguments) {
  return Slice(TextAt(arguments, 0), 1, WholeAt(arguments, 1));
}

SqlValue Right(const Arguments& arguments) {
  const std::wstring text = TextAt(arguments, 0);
  const std::int64_t length = WholeAt(arguments, 1);
  if (length < 0) RaiseLength("RIGHT");
  const std::int64_t left_out =
      std::max(static_cast<std::int64_t>(text.size()) - length, std::int64_t{0});
  return Slice(text, left_out + 1, length);
}

SqlValue CharIndex(const Arguments& arguments) {
  const std::wstring find = LowerCase(TextAt(arguments, 0));
  const std::wstring text = LowerCase(TextAt(arguments, 1));
  if (find.empty()) return std::int64_t{0};
  const auto start = static_cast<std::size_t>(std::max(WholeAt(arguments, 2) - 1, std::int64_t{0}));
  const std::size_t found = text.find(find, start);
  return found == std::wstring::npos ? std::int64_t{0} : static_cast<std::int64_t>(found) + 1;
}

SqlValue PatIndex(const Arguments& arguments) {
  std::wstring pattern = TextAt(arguments, 0);
  const std::wstring text = TextAt(arguments, 1);
  const bool is_anchored = !pattern.starts_with(L'%');
  if (!is_anchored) pattern.erase(0, 1);
  for (std::size_t start = 0; start <= text.size(); ++start) {
    if (MatchesSqlPattern(std::wstring_view{text}.substr(start), pattern, L'\0'))
      return static_cast<std::int64_t>(start) + 1;
    if (is_anchored) break;
  }
  return std::int64_t{0};
}

// Whatever the case of what is replaced.
SqlValue Replace(const Arguments& arguments) {
  const std::wstring text = TextAt(arguments, 0);
  const std::wstring lower = LowerCase(text);
  const std::wstring find = LowerCase(TextAt(arguments, 1));
  if (find.empty()) return arguments[0];
  const std::wstring replacement = TextAt(arguments, 2);
  std::wstring result;
  std::size_t at = 0;
  for (std::size_t found = lower.find(find); found != std::wstring::npos;
       found = lower.find(find, at)) {
    result.append(text, at, found - at).append(replacement);
    at = found + find.size();
  }
  return ToUtf8(result.append(text, at));
}

SqlValue Stuff(const Arguments& arguments) {
  const std::wstring text = TextAt(arguments, 0);
  const std::int64_t start = WholeAt(arguments, 1);
  const std::int64_t length = WholeAt(arguments, 2);
  if (start < 1 || length < 0 || start > static_cast<std::int64_t>(text.size())) return {};
  const auto first = static_cast<std::size_t>(start - 1);
  const std::size_t end = std::min(text.size(), first + static_cast<std::size_t>(length));
  return ToUtf8(text.substr(0, first) + TextAt(arguments, 3) + text.substr(end));
}

SqlValue Replicate(const Arguments& arguments) {
  const std::int64_t count = WholeAt(arguments, 1);
  if (count < 0) return {};
  const auto& text = std::get<std::string>(arguments[0]);
  std::string result;
  for (std::int64_t i = 0;
       i < count && result.size() + text.size() <= kLongestText && !text.empty(); ++i)
    result += text;
  return result;
}

SqlValue Reverse(const Arguments& arguments) {
  std::wstring text = TextAt(arguments, 0);
  std::ranges::reverse(text);
  return ToUtf8(text);
}

SqlValue Upper(const Arguments& arguments) { return ToUtf8(UpperCase(TextAt(arguments, 0))); }
SqlValue Lower(const Arguments& arguments) { return ToUtf8(LowerCase(TextAt(arguments, 0))); }

SqlValue Char(const Arguments& arguments) {
  const std::int64_t code = WholeAt(arguments, 0);
  if (code < 0 || code > 255) return {};
  return ToUtf8(std::wstring(1, static_cast<wchar_t>(code)));
}

SqlValue Ascii(const Arguments& arguments) {
  const std::wstring text = TextAt(arguments, 0);
  if (text.empty()) return {};
  return static_cast<std::int64_t>(text[0]);
}

// px_like(text, pattern, escape), "" for no escape character.
SqlValue Like(const Arguments& arguments) {
  const std::wstring escape = TextAt(arguments, 2);
  if (escape.size() > 1)
    throw SqlFunctionError{"The invalid escape character \"" + ToUtf8(escape) +
                               "\" was specified in a LIKE predicate.",
                           506};
  return std::int64_t{MatchesSqlPattern(TextAt(arguments, 0), TextAt(arguments, 1),
                                        escape.empty() ? L'\0' : escape[0])};
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
        "!=, <, <= , >, >= or when the subquery is used as an expression. (SQL Server error 512)",
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

struct Registration {
  const char* name;
  int arguments;
  void (*call)(sqlite3_context*, int, sqlite3_value**);
};

constexpr Registration kFunctions[] = {
    {"px_moment", 2, Moment},
    {"px_canon", 2, Canonical},
    {"px_date", 1, Call<DateText>},
    {"px_day", 2, Call<DayText>},
    {"px_datepart", 2, Call<DatePartNumber>},
    {"px_datename", 2, Call<DateName>},
    {"px_datediff", 3, Call<DateDiff>},
    {"px_dateadd", 4, Call<DateAddFunction>},
    {"px_eomonth", 2, Call<EndOfMonth>},
    {"px_datefromparts", 3, Call<DateFromParts>},
    {"px_isdate", 1, Call<IsDate>},
    {"px_isnumeric", 1, Call<IsNumeric>},
    {"px_cast", 7, Cast},
    {"px_as", 3, As},
    {"px_operate", 4, Call<Operate>},
    {"px_compare", 2, Call<Compare>},
    {"px_round", 3, Call<Round>},
    {"px_floor", 1, Call<Floor>},
    {"px_ceiling", 1, Call<Ceiling>},
    {"px_power", 3, Call<Power>},
    {"px_sign", 1, Call<Sign>},
    {"px_str", 3, Call<Str>},
    {"px_len", 1, Call<Length>},
    {"px_substring", 3, Call<Substring>},
    {"px_left", 2, Call<Left>},
    {"px_right", 2, Call<Right>},
    {"px_charindex", 3, Call<CharIndex>},
    {"px_patindex", 2, Call<PatIndex>},
    {"px_replace", 3, Call<Replace>},
    {"px_stuff", 4, Call<Stuff>},
    {"px_replicate", 2, Call<Replicate>},
    {"px_reverse", 1, Call<Reverse>},
    {"px_upper", 1, Call<Upper>},
    {"px_lower", 1, Call<Lower>},
    {"px_char", 1, Call<Char>},
    {"px_ascii", 1, Call<Ascii>},
    {"px_like", 3, Call<Like>},
};

}  // namespace

bool AddSqlFunctions(sqlite3* database) {
  // They give the same for the same arguments, so the engine may call them once instead of once a
  // row.
  for (const auto& [name, arguments, call] : kFunctions)
    if (sqlite3_create_function(database, name, arguments, SQLITE_UTF8 | SQLITE_DETERMINISTIC,
                                nullptr, call, nullptr, nullptr) != SQLITE_OK)
      return false;
  return sqlite3_create_function(database, "px_only", 1, SQLITE_UTF8, nullptr, nullptr,
                                 OnlyValueStep, OnlyValueFinal) == SQLITE_OK &&
         sqlite3_create_collation(database, kSqlCollation, SQLITE_UTF8, nullptr, Collate) ==
             SQLITE_OK;
}

}  // namespace pxscheduler
