#include "data/sqlite/sql_operand.h"

#include <algorithm>
#include <array>
#include <utility>

#include "data/sqlite/sql_dates.h"
#include "data/sqlite/sql_functions.h"
#include "data/sqlite/sql_token.h"

namespace pxscheduler {
namespace {

bool IsDate(const SqlOperand& operand) { return operand.kind == SqlKind::kDate; }
bool IsNumber(const SqlOperand& operand) { return operand.kind == SqlKind::kNumber; }
bool IsText(const SqlOperand& operand) { return operand.kind == SqlKind::kText; }

// SQLite would silently take the first of several values.
void RequireOneValue(SqlOperand& operand) {
  if (!operand.is_select) return;
  operand.sql =
      "(WITH ONLY_VALUE(V) AS " + operand.sql + " SELECT " + kSqlOnlyValue + "(V) FROM ONLY_VALUE)";
  operand.is_select = false;
}

std::string WithCollation(const SqlOperand& operand) {
  return "(" + operand.sql + ") COLLATE " + kSqlCollation;
}

// The right side of a comparison. Two columns compare by the collation that they have already.
std::string CollatedWith(const SqlOperand& left, const SqlOperand& right) {
  const bool is_between_columns = left.kind == SqlKind::kColumn && right.kind == SqlKind::kColumn;
  if (left.has_collation || right.has_collation || IsNumber(left) || IsNumber(right) ||
      is_between_columns)
    return right.sql;
  return WithCollation(right);
}

SqlOperand Condition(std::string sql) {
  SqlOperand condition;
  condition.sql = std::move(sql);
  return condition;
}

}  // namespace

SqlKind KindOfSqlFunction(std::string_view upper_name) {
  static constexpr auto kDateFunctions =
      std::to_array<std::string_view>({"GETDATE", "SYSDATETIME", "DATEADD"});
  static constexpr auto kNumberFunctions =
      std::to_array<std::string_view>({"YEAR", "MONTH", "DAY", "DATEPART", "DATEDIFF", "LEN",
                                       "CHARINDEX", "COUNT", "ABS", "ROUND", "AVG"});
  static constexpr auto kTextFunctions = std::to_array<std::string_view>(
      {"SUBSTRING", "LEFT", "RIGHT", "UPPER", "LOWER", "CONCAT", "LTRIM", "RTRIM", "REPLACE"});
  const auto is_among = [upper_name](const auto& names) {
    return std::find(names.begin(), names.end(), upper_name) != names.end();
  };
  if (is_among(kDateFunctions)) return SqlKind::kDate;
  if (is_among(kNumberFunctions)) return SqlKind::kNumber;
  return is_among(kTextFunctions) ? SqlKind::kText : SqlKind::kUnknown;
}

SqlOperand AddOperands(const SqlOperand& left, const SqlOperand& right, bool is_sum) {
  SqlOperand result;
  if (IsNumber(left) && IsNumber(right)) {
    // The blank keeps two "-" from beginning a comment.
    result.sql = left.sql + (is_sum ? "+" : "- ") + right.sql;
    result.kind = SqlKind::kNumber;
    return result;
  }
  result.sql = is_sum ? kSqlAdd : kSqlSubtract;
  result.sql += "(" + left.sql + "," + right.sql + ")";
  if (IsDate(left) != IsDate(right))
    result.kind = SqlKind::kDate;
  else if (IsText(left) || IsText(right))
    result.kind = SqlKind::kText;
  return result;
}

void AlignLiteral(SqlOperand& left, SqlOperand& right) {
  SqlOperand& aligned = left.literal ? left : right;
  const SqlOperand& other = left.literal ? right : left;
  if (!aligned.literal) return;
  if (IsDate(other)) {
    const std::optional<SqlMoment> date = ReadSqlDate(*aligned.literal);
    if (date) aligned.sql = SqlStringLiteral(WriteSqlMoment(*date));
  } else if (IsNumber(other)) {
    const std::string upper = UpperAscii(*aligned.literal);
    if (upper == "TRUE" || upper == "FALSE") aligned.sql = upper == "TRUE" ? "1" : "0";
  }
}

SqlOperand CompareOperands(SqlOperand left, std::string_view symbol, SqlOperand right) {
  RequireOneValue(left);
  RequireOneValue(right);
  AlignLiteral(left, right);
  return Condition(left.sql + std::string{symbol} + CollatedWith(left, right));
}

SqlOperand CompareWithRange(SqlOperand left, bool is_negated, SqlOperand low, SqlOperand high) {
  for (SqlOperand* operand : {&left, &low, &high}) RequireOneValue(*operand);
  AlignLiteral(left, low);
  AlignLiteral(left, high);
  return Condition(left.sql + (is_negated ? " NOT" : "") + " BETWEEN " + CollatedWith(left, low) +
                   " AND " + CollatedWith(left, high));
}

// SQLite compares the values of a list by the collation of the left side.
SqlOperand CompareWithList(SqlOperand left, bool is_negated, std::vector<SqlOperand> values) {
  RequireOneValue(left);
  std::string list;
  for (SqlOperand& value : values) {
    AlignLiteral(left, value);
    if (!list.empty()) list += ',';
    list += value.sql;
  }
  const bool has_text = std::any_of(values.begin(), values.end(), IsText);
  if (has_text && !IsNumber(left) && !left.has_collation) left.sql = WithCollation(left);
  return Condition(left.sql + (is_negated ? " NOT" : "") + " IN (" + list + ")");
}

}  // namespace pxscheduler
