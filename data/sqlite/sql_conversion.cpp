#include "data/sqlite/sql_conversion.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>

#include "data/sqlite/sql_date_text.h"
#include "data/sqlite/sql_token.h"
#include "data/sqlite/text_collation.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

constexpr std::int64_t kDefaultTextLength = 30;
constexpr std::int64_t kMillisecondsOfDay = 86'400'000;
constexpr int kConversionFailed = 241;
constexpr int kOutOfRange = 242;
constexpr int kOverflow = 8115;

constexpr SqlMoment kFirstSmallDateTime = kFirstDay;
constexpr SqlMoment kLastSmallDateTime{std::chrono::sys_days{std::chrono::year{2079} / 6 / 7}};

std::string_view Trim(std::string_view text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

[[noreturn]] void RaiseNoDate() {
  throw SqlFunctionError{
      "Conversion failed when converting date and/or time from character string.",
      kConversionFailed};
}

[[noreturn]] void RaiseOverflow(std::string_view type) {
  throw SqlFunctionError{
      "Arithmetic overflow error converting expression to data type " + std::string{type} + ".",
      kOverflow};
}

[[noreturn]] void RaiseOutOfRange(std::string_view from, std::string_view to) {
  throw SqlFunctionError{"The conversion of a " + std::string{from} + " data type to a " +
                             std::string{to} + " data type resulted in an out-of-range value.",
                         kOutOfRange};
}

[[noreturn]] void RaiseClash(std::string_view from, std::string_view to) {
  throw SqlFunctionError{"Explicit conversion from data type " + std::string{from} + " to " +
                             std::string{to} + " is not allowed.",
                         529};
}

// The whole text as a number; nothing for any other text.
template <typename Number>
std::optional<Number> NumberIn(std::string_view text) {
  text = Trim(text);
  if (text.starts_with('+')) text.remove_prefix(1);
  Number number{};
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  if (result.ec != std::errc{} || result.ptr != text.data() + text.size()) return std::nullopt;
  return number;
}

bool IsWholeNumber(std::string_view text) {
  text = Trim(text);
  if (text.starts_with('+') || text.starts_with('-')) text.remove_prefix(1);
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

double DaysSince1900(std::int64_t milliseconds) {
  return static_cast<double>((MomentAt(milliseconds) - kFirstDay).count()) / kMillisecondsOfDay;
}

std::int64_t IntegerOfText(const std::string& text, const std::string& type, std::int64_t least,
                           std::int64_t greatest) {
  if (Trim(text).empty()) return 0;
  const std::optional<std::int64_t> number = NumberIn<std::int64_t>(text);
  if (number && *number >= least && *number <= greatest) return *number;
  if (number || IsWholeNumber(text))
    throw SqlFunctionError{
        "The conversion of the varchar value '" + text + "' overflowed an " + type + " column.",
        248};
  throw SqlFunctionError{"Conversion failed when converting the varchar value '" + text +
                             "' to data type " + type + ".",
                         245};
}

SqlValue ToInteger(const SqlValue& value, SqlKind from, const std::string& type, std::int64_t least,
                   std::int64_t greatest) {
  if (const auto* text = std::get_if<std::string>(&value))
    return IntegerOfText(*text, type, least, greatest);
  double number = 0;
  if (const auto* integer = std::get_if<std::int64_t>(&value)) {
    if (!IsDateKind(from)) {
      if (*integer >= least && *integer <= greatest) return *integer;
      RaiseOverflow(type);
    }
    if (from != SqlKind::kDateTime) RaiseClash(NameOf(from), type);
    number = std::round(DaysSince1900(*integer));
  } else {
    number = std::trunc(std::get<double>(value));
  }
  if (!(number >= static_cast<double>(least) && number <= static_cast<double>(greatest)) ||
      number >= 9223372036854775808.0)
    RaiseOverflow(type);
  return static_cast<std::int64_t>(number);
}

SqlValue ToBit(const SqlValue& value) {
  if (const auto* integer = std::get_if<std::int64_t>(&value)) return std::int64_t{*integer != 0};
  if (const auto* number = std::get_if<double>(&value)) return std::int64_t{*number != 0};
  const auto& text = std::get<std::string>(value);
  const std::string upper = UpperAscii(Trim(text));
  if (upper == "TRUE") return std::int64_t{1};
  if (upper == "FALSE") return std::int64_t{0};
  constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
  return std::int64_t{IntegerOfText(text, "bit", -kMost, kMost) != 0};
}

double ToDouble(const SqlValue& value, SqlKind from, SqlKind to) {
  if (const auto* integer = std::get_if<std::int64_t>(&value)) {
    if (!IsDateKind(from)) return static_cast<double>(*integer);
    if (from != SqlKind::kDateTime) RaiseClash(NameOf(from), NameOf(to));
    return DaysSince1900(*integer);
  }
  if (const auto* number = std::get_if<double>(&value)) return *number;
  const auto& text = std::get<std::string>(value);
  if (Trim(text).empty() && to != SqlKind::kDecimal) return 0;
  const std::optional<double> number = NumberIn<double>(text);
  const bool has_exponent = text.find_first_of("eE") != std::string::npos;
  if (number && std::isfinite(*number) && (to == SqlKind::kFloat || !has_exponent)) return *number;
  if (to == SqlKind::kMoney)
    throw SqlFunctionError{
        "Cannot convert a char value to money. The char value has incorrect syntax.", 235};
  throw SqlFunctionError{"Error converting data type varchar to " + std::string{NameOf(to)} + ".",
                         8114};
}

// Halves away from zero. A whole result is an integer, which is written without a point.
SqlValue ToDecimal(const SqlValue& value, SqlKind from, SqlKind to, std::int64_t scale,
                   std::optional<std::int64_t> precision) {
  const auto* integer = std::get_if<std::int64_t>(&value);
  const double number = ToDouble(value, from, to);
  if (scale < 0 || scale > 38) throw SqlFunctionError{"Specified scale is invalid.", 192};
  const double unit = std::pow(10.0, static_cast<double>(scale));
  const double scaled = number * unit;
  // A hair is added because 1.005 is held as a little less, which would round it down. From 2^53 on
  // a double has no digits left to round.
  const double hair = scaled * std::numeric_limits<double>::epsilon();
  const double rounded = std::fabs(scaled) < 9e15 ? std::round(scaled + hair) / unit : number;
  if (precision && std::fabs(rounded) >= std::pow(10.0, static_cast<double>(*precision - scale)))
    throw SqlFunctionError{"Arithmetic overflow error converting expression to data type numeric.",
                           kOverflow};
  if (integer != nullptr && !IsDateKind(from)) return *integer;
  if (scale == 0 && std::fabs(rounded) < 9e18) return static_cast<std::int64_t>(rounded);
  return rounded;
}

DateFieldOrder OrderOfStyle(std::int64_t style) {
  switch (style % 100) {
    case 3:
    case 4:
    case 5:
    case 6:
    case 13:
      return DateFieldOrder::kDayMonthYear;
    case 2:
    case 11:
    case 12:
      return DateFieldOrder::kYearMonthDay;
    default:
      return DateFieldOrder::kMonthDayYear;
  }
}

SqlMoment OfKind(SqlMoment moment, SqlKind kind) {
  if (kind == SqlKind::kDate) return std::chrono::floor<std::chrono::days>(moment);
  return kind == SqlKind::kDateTime ? RoundedToDateTime(moment) : moment;
}

SqlMoment ToMoment(const SqlValue& value, SqlKind from, const SqlType& to, std::int64_t style) {
  if (const auto* text = std::get_if<std::string>(&value)) return DateOfText(*text, to.kind, style);
  if (IsDateKind(from)) {
    const SqlMoment moment = MomentAt(std::get<std::int64_t>(value));
    if (to.kind == SqlKind::kDateTime && moment < kFirstDateTime)
      RaiseOutOfRange(NameOf(from), to.name);
    return OfKind(moment, to.kind);
  }
  if (to.kind != SqlKind::kDateTime)
    throw SqlFunctionError{
        "Operand type clash: " + std::string{NameOf(from)} + " is incompatible with " + to.name,
        206};
  const double milliseconds =
      std::round(ToDouble(value, from, SqlKind::kFloat) * kMillisecondsOfDay);
  std::optional<SqlMoment> moment;
  if (std::fabs(milliseconds) < 4e14)
    moment = DateAdd(DatePart::kMillisecond, static_cast<std::int64_t>(milliseconds), kFirstDay);
  if (!moment || *moment < kFirstDateTime) RaiseOverflow("datetime");
  return RoundedToDateTime(*moment);
}

SqlMoment ToSmallDateTime(SqlMoment moment) {
  using std::chrono::minutes;
  if (moment < kFirstSmallDateTime || moment >= kLastSmallDateTime)
    RaiseOutOfRange("datetime", "smalldatetime");
  // Up to 29.998 seconds are left out, more count as a minute.
  return std::chrono::floor<minutes>(moment + std::chrono::milliseconds{30'001});
}

std::string TextOfDouble(double number, SqlKind from) {
  std::array<char, 64> buffer{};
  if (from == SqlKind::kMoney)
    return {buffer.data(),
            static_cast<std::size_t>(std::snprintf(buffer.data(), buffer.size(), "%.2f", number))};
  const int digits = from == SqlKind::kFloat ? 6 : 15;
  const auto written = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number,
                                     std::chars_format::general, digits);
  std::string text{buffer.data(), written.ptr};
  const std::size_t exponent = text.find('e');
  if (exponent != std::string::npos && text.size() - exponent == 4) text.insert(exponent + 2, "0");
  return text;
}

std::string TextOfDate(SqlMoment moment, SqlKind from, std::optional<std::int64_t> style) {
  if (!style && from != SqlKind::kDateTime) {
    if (from == SqlKind::kDate) return WriteSqlDay(moment);
    return WriteSqlDateInStyle(moment, 121).value_or("") + "0000";
  }
  std::optional<std::string> text = WriteSqlDateInStyle(moment, style.value_or(0));
  if (!text)
    throw SqlFunctionError{std::to_string(*style) +
                               " is not a valid style number when converting from " +
                               std::string{NameOf(from)} + " to a character string.",
                           281};
  if (from == SqlKind::kDate) {
    // The styles that have a time too end before it.
    const std::size_t time = text->find_first_of(" T", text->size() > 11 ? 10 : text->size());
    text->resize(std::min(text->size(), time));
  }
  return *text;
}

SqlValue ToText(const SqlValue& value, SqlKind from, const SqlType& type,
                std::optional<std::int64_t> style) {
  std::string text;
  if (const auto* held = std::get_if<std::string>(&value))
    text = *held;
  else if (const auto* number = std::get_if<double>(&value))
    text = TextOfDouble(*number, from);
  else if (IsDateKind(from))
    text = TextOfDate(MomentAt(std::get<std::int64_t>(value)), from, style);
  else if (from == SqlKind::kMoney)
    text = TextOfDouble(static_cast<double>(std::get<std::int64_t>(value)), from);
  else
    text = std::to_string(std::get<std::int64_t>(value));

  const bool has_any_length = type.name.ends_with("text");
  const std::int64_t length =
      has_any_length ? SqlType::kMaximum : type.length.value_or(kDefaultTextLength);
  if (length == SqlType::kMaximum) return text;
  std::wstring wide = FromUtf8(text);
  const auto most = static_cast<std::size_t>(length);
  if (wide.size() > most && IsNumberKind(from)) {
    if (from <= SqlKind::kBigInt) return std::string{"*"};
    RaiseOverflow(type.name);
  }
  if (!type.name.ends_with("varchar") || wide.size() > most) wide.resize(most, L' ');
  return ToUtf8(wide);
}

// What a value is, where its column does not tell, or tells something else.
SqlKind KindOf(const SqlValue& value, SqlKind declared) {
  if (std::holds_alternative<std::string>(value)) return SqlKind::kText;
  if (IsDateKind(declared) || IsNumberKind(declared)) return declared;
  return std::holds_alternative<double>(value) ? SqlKind::kFloat : SqlKind::kInt;
}

}  // namespace

std::int64_t MillisecondsOf(SqlMoment moment) { return moment.time_since_epoch().count(); }

SqlMoment MomentAt(std::int64_t milliseconds) {
  return SqlMoment{std::chrono::milliseconds{milliseconds}};
}

SqlMoment DateOfText(std::string_view text, SqlKind kind, std::int64_t style) {
  if (kind != SqlKind::kDateTime)
    if (const std::optional<SqlMoment> stored = ReadStoredDate(text)) return OfKind(*stored, kind);
  const DateText read = ReadDateText(text, OrderOfStyle(style));
  if (kind != SqlKind::kDateTime) {
    if (read.fault != DateTextFault::kNone) RaiseNoDate();
  } else {
    if (read.fault == DateTextFault::kNoDate || read.has_long_fraction) RaiseNoDate();
    if (read.fault == DateTextFault::kOutOfRange || read.moment < kFirstDateTime)
      RaiseOutOfRange("varchar", "datetime");
  }
  return OfKind(read.moment, kind);
}

SqlMoment DateInColumn(std::string_view text, SqlKind kind) {
  const std::optional<SqlMoment> moment = ReadStoredDate(text);
  if (!moment) RaiseNoDate();
  return OfKind(*moment, kind);
}

SqlValue ConvertSqlValue(const SqlValue& value, SqlKind from, const SqlType& to,
                         std::optional<std::int64_t> style) {
  if (std::holds_alternative<std::monostate>(value)) return value;
  from = KindOf(value, from);
  switch (to.kind) {
    case SqlKind::kBit:
      return ToBit(value);
    case SqlKind::kInt:
      if (to.name == "smallint") return ToInteger(value, from, to.name, -32768, 32767);
      if (to.name == "tinyint") return ToInteger(value, from, to.name, 0, 255);
      return ToInteger(value, from, "int", std::numeric_limits<std::int32_t>::min(),
                       std::numeric_limits<std::int32_t>::max());
    case SqlKind::kBigInt:
      return ToInteger(value, from, "bigint", std::numeric_limits<std::int64_t>::min(),
                       std::numeric_limits<std::int64_t>::max());
    case SqlKind::kMoney:
      return ToDecimal(value, from, to.kind, 4, std::nullopt);
    case SqlKind::kDecimal:
      return ToDecimal(value, from, to.kind, to.scale, to.length);
    case SqlKind::kFloat:
      return ToDouble(value, from, to.kind);
    case SqlKind::kDate:
    case SqlKind::kDateTime:
    case SqlKind::kDateTime2: {
      const SqlMoment moment = ToMoment(value, from, to, style.value_or(0));
      return MillisecondsOf(to.name == "smalldatetime" ? ToSmallDateTime(moment) : moment);
    }
    case SqlKind::kNull:
    case SqlKind::kText:
    case SqlKind::kUnknown:
      break;
  }
  return ToText(value, from, to, style);
}

SqlValue ConvertToKind(const SqlValue& value, SqlKind from, SqlKind to) {
  if (to == SqlKind::kUnknown || to == SqlKind::kNull) return value;
  // What meets a decimal keeps its digits.
  if (to == SqlKind::kDecimal && !std::holds_alternative<std::monostate>(value)) {
    if (!std::holds_alternative<std::string>(value)) return value;
    return ToDouble(value, from, to);
  }
  return ConvertSqlValue(value, from, {to, std::string{NameOf(to)}, SqlType::kMaximum},
                         std::nullopt);
}

int CompareSqlValues(const SqlValue& left, const SqlValue& right) {
  const auto* left_text = std::get_if<std::string>(&left);
  const auto* right_text = std::get_if<std::string>(&right);
  if (left_text != nullptr && right_text != nullptr) return CompareSqlText(*left_text, *right_text);
  const double left_number = ToDouble(left, SqlKind::kFloat, SqlKind::kFloat);
  const double right_number = ToDouble(right, SqlKind::kFloat, SqlKind::kFloat);
  return left_number < right_number ? -1 : static_cast<int>(left_number > right_number);
}

}  // namespace pxscheduler
