#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pxscheduler {

// What an operand of an expression is known to be. A column of text or of unknown type is kColumn.
enum class SqlKind { kUnknown, kColumn, kNumber, kDate, kText };

// A part of an expression, translated.
struct SqlOperand {
  std::string sql;
  SqlKind kind = SqlKind::kUnknown;
  std::optional<std::string> literal;  // the text, when it is one string literal
  bool is_select = false;              // a sub-select in parentheses
  bool has_collation = false;          // of its own
};

// What a function gives, by its upper-case name.
SqlKind KindOfSqlFunction(std::string_view upper_name);

// "+" where `is_sum`, else "-". Functions do it unless both sides are numbers.
SqlOperand AddOperands(const SqlOperand& left, const SqlOperand& right, bool is_sum);

// A literal among the two takes the form of what it stands beside: that of the engine's dates where
// the other one is a date, 1 for 'True' where it is a number.
void AlignLiteral(SqlOperand& left, SqlOperand& right);

// Comparisons, in which text follows kSqlCollation and a sub-select must give one value.
SqlOperand CompareOperands(SqlOperand left, std::string_view symbol, SqlOperand right);
SqlOperand CompareWithRange(SqlOperand left, bool is_negated, SqlOperand low, SqlOperand high);
SqlOperand CompareWithList(SqlOperand left, bool is_negated, std::vector<SqlOperand> values);

}  // namespace pxscheduler
