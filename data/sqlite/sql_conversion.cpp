#include "data/sqlite/sql_conversion.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>

#include "data/sqlite/sql_dates.h"
#include "data/sqlite/sql_token.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

constexpr std::int64_t kDefaultTextLength = 30;

std::string_view Trim(std::string_view text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

[[noreturn]] void RaiseConversionFailed(const std::string& text, std::string_view type) {
  throw SqlFunctionError{"Conversion failed when converting the varchar value '" + text +
                         "' to data type " + std::string{type} + "."};
}

template <typename Number>
std::optional<Number> WholeTextAs(std::string_view text) {
  text = Trim(text);
  if (text.starts_with('+')) text.remove_prefix(1);
  Number number{};
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  if (result.ec != std::errc{} || result.ptr != text.data() + text.size()) return std::nullopt;
  return number;
}

SqlValue ToInteger(const SqlValue& value, const std::string& type, std::int64_t least,
                   std::int64_t greatest) {
  const auto* text = std::get_if<std::string>(&value);
  double number = 0;
  if (const auto* integer = std::get_if<std::int64_t>(&value)) {
    if (*integer >= least && *integer <= greatest) return *integer;
    throw SqlFunctionError{"Arithmetic overflow error converting expression to data type " + type +
                           "."};
  }
  if (text != nullptr) {
    if (Trim(*text).empty()) return std::int64_t{0};
    const std::optional<std::int64_t> whole = WholeTextAs<std::int64_t>(*text);
    if (!whole) RaiseConversionFailed(*text, type);
    return ToInteger(*whole, type, least, greatest);
  }
  number = std::trunc(std::get<double>(value));
  if (!(number >= static_cast<double>(least) && number <= static_cast<double>(greatest)) ||
      number >= 9223372036854775808.0)
    throw SqlFunctionError{"Arithmetic overflow error converting expression to data type " + type +
                           "."};
  return static_cast<std::int64_t>(number);
}

SqlValue ToBit(const SqlValue& value) {
  if (const auto* integer = std::get_if<std::int64_t>(&value)) return std::int64_t{*integer != 0};
  if (const auto* number = std::get_if<double>(&value)) return std::int64_t{*number != 0};
  const auto& text = std::get<std::string>(value);
  const std::string upper = UpperAscii(Trim(text));
  if (upper == "TRUE") return std::int64_t{1};
  if (upper == "FALSE" || upper.empty()) return std::int64_t{0};
  const std::optional<std::int64_t> whole = WholeTextAs<std::int64_t>(text);
  if (!whole) RaiseConversionFailed(text, "bit");
  return std::int64_t{*whole != 0};
}

double ToDouble(const SqlValue& value, std::string_view type) {
  if (const auto* integer = std::get_if<std::int64_t>(&value)) return static_cast<double>(*integer);
  if (const auto* number = std::get_if<double>(&value)) return *number;
  const auto& text = std::get<std::string>(value);
  const std::optional<double> number = WholeTextAs<double>(text);
  if (!number || !std::isfinite(*number))
    throw SqlFunctionError{"Error converting data type varchar to " + std::string{type} + "."};
  return *number;
}

// Halves away from zero. A whole result is an integer, which the engine writes without a point.
SqlValue ToDecimal(const SqlValue& value, std::int64_t scale) {
  if (std::holds_alternative<std::int64_t>(value)) return value;
  const double number = ToDouble(value, "numeric");
  if (scale < 0 || scale > 38) throw SqlFunctionError{"Invalid scale."};
  const double unit = std::pow(10.0, static_cast<double>(scale));
  const double scaled = number * unit;
  // A hair is added because 1.005 is held as a little less, which would round it down. From 2^53 on
  // a double has no digits left to round.
  const double hair = scaled * std::numeric_limits<double>::epsilon();
  const double rounded = std::fabs(scaled) < 9e15 ? std::round(scaled + hair) / unit : number;
  if (scale == 0 && std::fabs(rounded) < 9e18) return static_cast<std::int64_t>(rounded);
  return rounded;
}

std::optional<SqlMoment> MomentOf(const SqlValue& value, std::optional<std::int64_t> style) {
  if (const auto* text = std::get_if<std::string>(&value)) {
    const std::int64_t short_style = style.value_or(0) % 100;
    const bool day_first = short_style >= 3 && short_style <= 6;
    return ReadSqlDate(*text,
                       day_first ? DateFieldOrder::kDayMonthYear : DateFieldOrder::kMonthDayYear);
  }
  // A number counts days from 1 January 1900.
  const double number = ToDouble(value, "datetime");
  if (!(std::fabs(number) < 4e6)) return std::nullopt;
  const SqlMoment epoch{std::chrono::sys_days{std::chrono::year{1900} / 1 / 1}};
  return DateAdd(DatePart::kMillisecond, static_cast<std::int64_t>(std::round(number * 86400000)),
                 epoch);
}

SqlValue ToText(const SqlValue& value, const SqlType& type, bool is_padded,
                std::optional<std::int64_t> style) {
  std::string text = SqlTextOf(value);
  if (style) {
    if (const std::optional<SqlMoment> moment = ReadSqlDate(text)) {
      const std::optional<std::string> written = WriteSqlDateInStyle(*moment, *style);
      if (!written)
        throw SqlFunctionError{std::to_string(*style) +
                               " is not a valid style number when converting from datetime to a "
                               "character string."};
      text = *written;
    }
  }
  const std::int64_t length = type.length.value_or(kDefaultTextLength);
  if (length == SqlType::kMaximum) return text;
  std::wstring wide = FromUtf8(text);
  if (is_padded || wide.size() > static_cast<std::size_t>(length))
    wide.resize(static_cast<std::size_t>(length), L' ');
  return ToUtf8(wide);
}

}  // namespace

std::string SqlTextOf(const SqlValue& value) {
  if (const auto* text = std::get_if<std::string>(&value)) return *text;
  if (const auto* integer = std::get_if<std::int64_t>(&value)) return std::to_string(*integer);
  if (const auto* number = std::get_if<double>(&value)) {
    std::array<char, 40> buffer{};
    const auto written = std::to_chars(buffer.data(), buffer.data() + buffer.size(), *number,
                                       std::chars_format::general, 15);
    return {buffer.data(), written.ptr};
  }
  return {};
}

SqlValue ConvertSqlValue(const SqlValue& value, const SqlType& type,
                         std::optional<std::int64_t> style) {
  if (std::holds_alternative<std::monostate>(value)) return value;
  const std::string name = UpperAscii(type.name);
  if (name == "VARCHAR" || name == "NVARCHAR") return ToText(value, type, false, style);
  if (name == "CHAR" || name == "NCHAR") return ToText(value, type, true, style);
  if (name == "TEXT" || name == "NTEXT")
    return ToText(value, {name, SqlType::kMaximum, {}}, false, style);
  if (name == "INT" || name == "INTEGER")
    return ToInteger(value, "int", std::numeric_limits<std::int32_t>::min(),
                     std::numeric_limits<std::int32_t>::max());
  if (name == "BIGINT")
    return ToInteger(value, "bigint", std::numeric_limits<std::int64_t>::min(),
                     std::numeric_limits<std::int64_t>::max());
  if (name == "SMALLINT") return ToInteger(value, "smallint", -32768, 32767);
  if (name == "TINYINT") return ToInteger(value, "tinyint", 0, 255);
  if (name == "BIT") return ToBit(value);
  if (name == "DECIMAL" || name == "NUMERIC" || name == "DEC")
    return ToDecimal(value, type.scale.value_or(0));
  if (name == "MONEY" || name == "SMALLMONEY") return ToDecimal(value, 4);
  if (name == "FLOAT" || name == "REAL") return ToDouble(value, "float");
  if (name == "DATE" || name == "DATETIME" || name == "DATETIME2" || name == "SMALLDATETIME") {
    const std::optional<SqlMoment> moment = MomentOf(value, style);
    if (!moment) return std::monostate{};
    return name == "DATE" ? WriteSqlDay(*moment) : WriteSqlMoment(*moment);
  }
  throw SqlFunctionError{"The embedded database engine cannot convert to type " + type.name + "."};
}

}  // namespace pxscheduler
