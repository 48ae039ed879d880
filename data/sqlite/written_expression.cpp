#include "data/sqlite/written_expression.h"

#include <algorithm>

#include "data/sqlite/sql_conversion.h"
#include "data/sqlite/sql_cursor.h"
#include "data/sqlite/sql_functions.h"

namespace pxscheduler {
namespace {

std::string Collated(const WrittenExpression& value) {
  return value.sql + " COLLATE " + (value.collation.empty() ? kSqlCollation : value.collation);
}

// A date column's range of texts in which the moment's day lies, for an index; the comparison
// itself follows.
std::string IndexRange(std::string_view comparison, const std::string& column,
                       const std::string& moment) {
  const std::string from = column + ">=" + WrittenCall("px_day", {moment, "0"});
  const std::string below = column + "<" + WrittenCall("px_day", {moment, "1"});
  if (comparison == "=") return from + " AND " + below + " AND ";
  if (comparison.starts_with('>')) return from + " AND ";
  return comparison == "<>" ? "" : below + " AND ";
}

std::string_view Turned(std::string_view comparison) {
  if (comparison == "<") return ">";
  if (comparison == "<=") return ">=";
  if (comparison == ">") return "<";
  return comparison == ">=" ? "<=" : comparison;
}

}  // namespace

std::string NumberOf(SqlKind kind) { return std::to_string(static_cast<int>(kind)); }

std::string WrittenCall(std::string_view function, std::initializer_list<std::string> arguments) {
  std::string sql{function};
  char separator = '(';
  for (const std::string& argument : arguments) {
    sql += separator;
    sql += argument;
    separator = ',';
  }
  return sql + ")";
}

void TakePart(WrittenExpression& whole, const WrittenExpression& part) {
  whole.is_constant = whole.is_constant && part.is_constant;
  whole.is_aggregate = whole.is_aggregate || part.is_aggregate;
  if (whole.loose_column.empty()) whole.loose_column = part.loose_column;
  if (whole.collation.empty()) whole.collation = part.collation;
}

WrittenExpression MadeOf(std::string sql, SqlKind kind,
                         std::initializer_list<const WrittenExpression*> parts) {
  WrittenExpression whole;
  whole.sql = std::move(sql);
  whole.kind = kind;
  for (const WrittenExpression* part : parts) TakePart(whole, *part);
  return whole;
}

WrittenExpression ConvertedTo(const WrittenExpression& value, SqlKind kind) {
  if (value.is_stored)
    return ConvertedTo(
        MadeOf(WrittenCall("px_moment", {value.sql, NumberOf(value.kind)}), value.kind, {&value}),
        kind);
  if (value.kind == kind || value.kind == SqlKind::kNull || kind == SqlKind::kNull) return value;
  if (kind == SqlKind::kUnknown)
    return IsDateKind(value.kind) ? MadeOf(WrittenCall("px_date", {value.sql}), kind, {&value})
                                  : value;
  if (IsDateKind(kind)) {
    if (value.literal)
      return MadeOf(std::to_string(MillisecondsOf(DateOfText(*value.literal, kind, 0))), kind,
                    {&value});
    if (IsNumberKind(value.kind) && kind != SqlKind::kDateTime)
      throw SqlSyntaxError{"Operand type clash: " + std::string{NameOf(value.kind)} +
                           " is incompatible with " + std::string{NameOf(kind)} +
                           " (SQL Server error 206)"};
  } else if (IsNumberKind(kind) && IsNumberKind(value.kind) && value.kind < kind) {
    return MadeOf(value.sql, kind, {&value});  // which SQLite compares and computes with as it is
  }
  return MadeOf(WrittenCall("px_as", {value.sql, NumberOf(value.kind), NumberOf(kind)}), kind,
                {&value});
}

std::string AsColumn(const WrittenExpression& value) {
  return IsDateKind(value.kind) && !value.is_stored ? WrittenCall("px_date", {value.sql})
                                                    : value.sql;
}

std::string AsKey(const WrittenExpression& value) {
  if (value.is_stored) return WrittenCall("px_canon", {value.sql, NumberOf(value.kind)});
  if (value.kind == SqlKind::kText || value.kind == SqlKind::kUnknown) return Collated(value);
  return AsColumn(value);
}

WrittenExpression Compared(std::string_view comparison, const WrittenExpression& left,
                           const WrittenExpression& right) {
  if (!left.is_searchable && right.is_searchable) return Compared(Turned(comparison), right, left);
  SqlKind kind = CommonKind(left.kind, right.kind);
  const SqlKind other = std::min(left.kind, right.kind);
  if (kind == SqlKind::kUnknown && IsDateKind(other)) kind = other;
  const std::string infix{comparison};
  std::string sql;
  if (left.kind == SqlKind::kNull || right.kind == SqlKind::kNull) {
    sql = "(" + left.sql + infix + right.sql + ")";
  } else if (kind == SqlKind::kUnknown) {
    sql = "(" + WrittenCall("px_compare", {left.sql, right.sql}) + infix + "0)";
  } else if (kind == SqlKind::kText) {
    const WrittenExpression& naming = left.collation.empty() ? right : left;
    sql = "(" + left.sql + infix + right.sql + " COLLATE " +
          (naming.collation.empty() ? kSqlCollation : naming.collation) + ")";
  } else {
    const WrittenExpression first = ConvertedTo(left, kind);
    const WrittenExpression second = ConvertedTo(right, kind);
    sql = "(";
    if (left.is_searchable && second.is_constant)
      sql += IndexRange(comparison, left.sql, second.sql);
    sql += first.sql + infix + second.sql + ")";
  }
  WrittenExpression condition = MadeOf(std::move(sql), SqlKind::kBit, {&left, &right});
  condition.is_condition = true;
  return condition;
}

}  // namespace pxscheduler
