#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "data/sqlite/sql_dates.h"
#include "data/sqlite/sql_type.h"

namespace pxscheduler {

// A value while a statement runs: text as UTF-8, a date as its milliseconds since 1970.
// std::monostate is Null.
using SqlValue = std::variant<std::monostate, std::int64_t, double, std::string>;

// What a statement cannot do with a value, with SQL Server's text and number.
struct SqlFunctionError {
  std::string description;

  SqlFunctionError(const std::string& text, int number)
      : description(text + " (SQL Server error " + std::to_string(number) + ")") {}
};

inline constexpr SqlMoment kFirstDay{
    std::chrono::sys_days{std::chrono::year{1900} / 1 / 1}};  // day 0
inline constexpr SqlMoment kFirstDateTime{std::chrono::sys_days{std::chrono::year{1753} / 1 / 1}};

std::int64_t MillisecondsOf(SqlMoment moment);
SqlMoment MomentAt(std::int64_t milliseconds);

// The value of the kind `from` converted as CONVERT does; Null stays Null. `style` is the number of
// a form of dates, if one is given. Raises SqlFunctionError where SQL Server does.
SqlValue ConvertSqlValue(const SqlValue& value, SqlKind from, const SqlType& to,
                         std::optional<std::int64_t> style);

// The same to the plain type of a kind, text of any length.
SqlValue ConvertToKind(const SqlValue& value, SqlKind from, SqlKind to);

// The date that a text stands for as a value of the kind. Raises SqlFunctionError (241, 242).
SqlMoment DateOfText(std::string_view text, SqlKind kind, std::int64_t style);

// The date in a column, as a value of the column's kind. Raises SqlFunctionError (241) for a text
// that is none in a form of ISO 8601.
SqlMoment DateInColumn(std::string_view text, SqlKind kind);

// 0 where they compare equal: texts without case, a number with a text that is one.
int CompareSqlValues(const SqlValue& left, const SqlValue& right);

}  // namespace pxscheduler
