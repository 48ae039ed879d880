#include "data/sqlite/sql_type.h"

#include <algorithm>

#include "data/sqlite/sql_token.h"
#include "text/ascii_case.h"

namespace pxscheduler {
namespace {

struct KnownType {
  std::string_view name;  // in upper case
  SqlKind kind;
};

// Longer names before those that they begin with, because a declared type may go on.
constexpr KnownType kTypes[] = {
    {"SMALLDATETIME", SqlKind::kDateTime},
    {"DATETIME2", SqlKind::kDateTime2},
    {"DATETIME", SqlKind::kDateTime},
    {"DATE", SqlKind::kDate},
    {"NVARCHAR", SqlKind::kText},
    {"VARCHAR", SqlKind::kText},
    {"NCHAR", SqlKind::kText},
    {"CHAR", SqlKind::kText},
    {"NTEXT", SqlKind::kText},
    {"TEXT", SqlKind::kText},
    {"BIT", SqlKind::kBit},
    {"BIGINT", SqlKind::kBigInt},
    {"INTEGER", SqlKind::kInt},
    {"INT", SqlKind::kInt},
    {"SMALLINT", SqlKind::kInt},
    {"TINYINT", SqlKind::kInt},
    {"SMALLMONEY", SqlKind::kMoney},
    {"MONEY", SqlKind::kMoney},
    {"DECIMAL", SqlKind::kDecimal},
    {"NUMERIC", SqlKind::kDecimal},
    {"DEC", SqlKind::kDecimal},
    {"FLOAT", SqlKind::kFloat},
    {"REAL", SqlKind::kFloat},
};

// Names that SQLite's users declare besides.
constexpr KnownType kOtherDeclarations[] = {
    {"TIMESTAMP", SqlKind::kDateTime}, {"BOOL", SqlKind::kBit},
    {"DOUBLE", SqlKind::kFloat},       {"CLOB", SqlKind::kText},
    {"TIME", SqlKind::kText},          {"UNIQUEIDENTIFIER", SqlKind::kText},
    {"SYSNAME", SqlKind::kText}};

}  // namespace

std::optional<SqlType> SqlTypeNamed(std::string_view name) {
  const std::string upper = UpperAscii(name);
  for (const KnownType& type : kTypes)
    if (type.name == upper) return SqlType{type.kind, LowerAscii(upper), {}};
  return std::nullopt;
}

SqlKind DeclaredKind(std::string_view declared_type) {
  const std::string upper = UpperAscii(declared_type);
  for (const auto& type : kTypes)
    if (upper.starts_with(type.name)) return type.kind;
  for (const auto& type : kOtherDeclarations)
    if (upper.starts_with(type.name)) return type.kind;
  // As SQLite itself takes it.
  return upper.find("INT") != std::string::npos && !upper.starts_with("POINT") ? SqlKind::kInt
                                                                               : SqlKind::kUnknown;
}

std::string_view NameOf(SqlKind kind) {
  switch (kind) {
    case SqlKind::kBit:
      return "bit";
    case SqlKind::kInt:
      return "int";
    case SqlKind::kBigInt:
      return "bigint";
    case SqlKind::kMoney:
      return "money";
    case SqlKind::kDecimal:
      return "numeric";
    case SqlKind::kFloat:
      return "float";
    case SqlKind::kDate:
      return "date";
    case SqlKind::kDateTime:
      return "datetime";
    case SqlKind::kDateTime2:
      return "datetime2";
    case SqlKind::kNull:
    case SqlKind::kText:
    case SqlKind::kUnknown:
      break;
  }
  return "varchar";
}

SqlKind CommonKind(SqlKind left, SqlKind right) { return std::max(left, right); }

bool IsDateKind(SqlKind kind) { return kind >= SqlKind::kDate && kind <= SqlKind::kDateTime2; }

bool IsNumberKind(SqlKind kind) { return kind >= SqlKind::kBit && kind <= SqlKind::kFloat; }

}  // namespace pxscheduler
