#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace pxscheduler {

// A value of the embedded engine, text as UTF-8. std::monostate is Null.
using SqlValue = std::variant<std::monostate, std::int64_t, double, std::string>;

// A type as CONVERT and CAST name it: VARCHAR(30), DECIMAL(10,2). The length or precision and the
// scale are absent where they are not given, and kMaximum stands for "max".
struct SqlType {
  static constexpr std::int64_t kMaximum = -1;

  std::string name;
  std::optional<std::int64_t> length;
  std::optional<std::int64_t> scale;
};

// What a function of the engine cannot do; the text is SQL Server's own where it has one.
struct SqlFunctionError {
  std::string description;
};

// The value converted to the type as CONVERT does; Null stays Null. `style` is the number of a date
// form, 0 where none is given. Text that is no date becomes Null instead of an error, so that one
// spoilt row does not end a run. Dates are held as text ("2026-11-16 15:07:41").
// Raises SqlFunctionError for other texts that cannot be converted, unknown types and unknown
// styles.
SqlValue ConvertSqlValue(const SqlValue& value, const SqlType& type,
                         std::optional<std::int64_t> style);

// The text of a value as the engine writes it, Null as "".
std::string SqlTextOf(const SqlValue& value);

}  // namespace pxscheduler
