#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace pxscheduler {

// SQL Server's types as far as they behave differently here, in the order of their precedence: of
// two that meet, the one further down is what the other is converted to ("Data type precedence" of
// the Transact-SQL reference).
enum class SqlKind {
  kNull,  // the word NULL
  kText,
  kBit,
  kInt,  // smallint and tinyint too
  kBigInt,
  kMoney,
  kDecimal,
  kFloat,
  kDate,
  kDateTime,  // smalldatetime too
  kDateTime2,
  kUnknown,  // known by each value alone: a column without a declared type
};

// A type as CAST and CONVERT name it.
struct SqlType {
  static constexpr std::int64_t kMaximum = -1;  // varchar(max)

  SqlKind kind = SqlKind::kUnknown;
  std::string name;                    // in lower case, as SQL Server writes it
  std::optional<std::int64_t> length;  // or the precision of a number
  std::int64_t scale = 0;
};

// "varchar", without case. Nothing for a type that is not known here.
std::optional<SqlType> SqlTypeNamed(std::string_view name);

// Of a column, by the type that the schema declares ("DECIMAL(10,2)"), compared without case.
SqlKind DeclaredKind(std::string_view declared_type);

// The name of a type of this kind.
std::string_view NameOf(SqlKind kind);

// What two values that meet are converted to.
SqlKind CommonKind(SqlKind left, SqlKind right);

bool IsDateKind(SqlKind kind);
bool IsNumberKind(SqlKind kind);

}  // namespace pxscheduler
