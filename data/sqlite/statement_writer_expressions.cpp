#include <algorithm>
#include <charconv>
#include <cstdint>
#include <utility>

#include "data/sqlite/sql_conversion.h"
#include "data/sqlite/sql_functions.h"
#include "data/sqlite/statement_writer.h"

namespace pxscheduler {
namespace {

WrittenExpression AsCondition(WrittenExpression expression) {
  expression.kind = SqlKind::kBit;
  expression.is_condition = true;
  return expression;
}

std::string Negated(bool is_negated, const std::string& sql) {
  return is_negated ? "(NOT " + sql + ")" : sql;
}

// The one column of StatementWriter::OneColumn, in its row.
WrittenExpression ValueOfRow(const WrittenSql& query) {
  WrittenExpression value = MadeOf("px_value", query.columns[0].kind, {});
  value.is_stored = IsDateKind(value.kind);
  value.is_constant = false;
  return value;
}

}  // namespace

WrittenExpression StatementWriter::Scalar(const SqlNode& node, const SqlScope& scope) {
  WrittenExpression value = Expression(node, scope);
  if (value.is_condition) Raise("A condition stands where a value is expected.", 156, node);
  if (scope.groups.contains(value.sql)) value.loose_column.clear();
  return value;
}

WrittenExpression StatementWriter::Condition(const SqlNode& node, const SqlScope& scope) {
  WrittenExpression condition = Expression(node, scope);
  if (!condition.is_condition)
    Raise("An expression of non-boolean type specified in a context where a condition is expected.",
          4145, node);
  return condition;
}

WrittenExpression StatementWriter::Expression(const SqlNode& node, const SqlScope& scope) {
  switch (node.kind) {
    case SqlNodeKind::kNumber:
      return Number(node);
    case SqlNodeKind::kString: {
      WrittenExpression text = MadeOf(SqlStringLiteral(node.text), SqlKind::kText, {});
      text.literal = node.text;
      return text;
    }
    case SqlNodeKind::kNull:
      return MadeOf("NULL", SqlKind::kNull, {});
    case SqlNodeKind::kColumn:
      return Column(node, scope);
    case SqlNodeKind::kStar:
      Raise("Incorrect syntax near '*'.", 102, node);
    case SqlNodeKind::kNegative:
    case SqlNodeKind::kOperation:
      return Operation(node, scope);
    case SqlNodeKind::kComparison:
      return Compared(node.text, Scalar(node.operands[0], scope), Scalar(node.operands[1], scope));
    case SqlNodeKind::kQuantified:
      return Quantified(node, scope);
    case SqlNodeKind::kAnd:
    case SqlNodeKind::kOr: {
      const WrittenExpression left = Condition(node.operands[0], scope);
      const WrittenExpression right = Condition(node.operands[1], scope);
      const char* const word = node.kind == SqlNodeKind::kAnd ? " AND " : " OR ";
      return AsCondition(
          MadeOf("(" + left.sql + word + right.sql + ")", SqlKind::kBit, {&left, &right}));
    }
    case SqlNodeKind::kNot: {
      const WrittenExpression operand = Condition(node.operands[0], scope);
      return AsCondition(MadeOf(Negated(true, operand.sql), SqlKind::kBit, {&operand}));
    }
    case SqlNodeKind::kBetween: {
      const WrittenExpression value = Scalar(node.operands[0], scope);
      const WrittenExpression lower = Compared(">=", value, Scalar(node.operands[1], scope));
      const WrittenExpression upper = Compared("<=", value, Scalar(node.operands[2], scope));
      return AsCondition(
          MadeOf(Negated(node.is_negated, "(" + lower.sql + " AND " + upper.sql + ")"),
                 SqlKind::kBit, {&lower, &upper}));
    }
    case SqlNodeKind::kInList:
      return InList(node, scope);
    case SqlNodeKind::kInQuery:
      return InQuery(node, scope);
    case SqlNodeKind::kExists: {
      WrittenExpression exists =
          MadeOf("EXISTS (" + Query(*node.query, &scope).sql + ")", SqlKind::kBit, {});
      exists.is_constant = false;
      return AsCondition(std::move(exists));
    }
    case SqlNodeKind::kLike:
      return Like(node, scope);
    case SqlNodeKind::kIsNull: {
      const WrittenExpression value = Scalar(node.operands[0], scope);
      return AsCondition(MadeOf("(" + value.sql + (node.is_negated ? " IS NOT NULL)" : " IS NULL)"),
                                SqlKind::kBit, {&value}));
    }
    case SqlNodeKind::kCase:
      return Case(node, scope);
    case SqlNodeKind::kCast:
      return Cast(node, scope);
    case SqlNodeKind::kCall:
      return Call(node, scope);
    case SqlNodeKind::kWindow:
      return Window(node, scope);
    case SqlNodeKind::kSubquery:
      return Subquery(node, scope);
    case SqlNodeKind::kCollate:
      break;
  }
  WrittenExpression collated = ConvertedTo(Scalar(node.operands[0], scope), SqlKind::kText);
  const std::string name = UpperAscii(node.text);
  const bool tells_cases =
      name.find("_CS") != std::string::npos || name.find("_BIN") != std::string::npos;
  collated.collation = tells_cases ? "BINARY" : kSqlCollation;
  return collated;
}

WrittenExpression StatementWriter::Number(const SqlNode& node) const {
  const std::string& text = node.text;
  const bool is_hexadecimal = text.starts_with("0x") || text.starts_with("0X");
  if (!is_hexadecimal && text.find_first_of("eE") != std::string::npos)
    return MadeOf(text, SqlKind::kFloat, {});
  if (!is_hexadecimal && text.find('.') != std::string::npos)
    return MadeOf(text, SqlKind::kDecimal, {});
  std::int64_t number = 0;
  const std::string_view digits = std::string_view{text}.substr(is_hexadecimal ? 2 : 0);
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), number,
                                      is_hexadecimal ? 16 : 10);
  if (result.ptr != digits.data() + digits.size() || (is_hexadecimal && result.ec != std::errc{}))
    Raise("Incorrect syntax near '" + text + "'.", 102, node);
  if (result.ec != std::errc{}) return MadeOf(text + ".0", SqlKind::kDecimal, {});
  const bool is_int = number == static_cast<std::int32_t>(number);
  return MadeOf(std::to_string(number), is_int ? SqlKind::kInt : SqlKind::kBigInt, {});
}

WrittenExpression StatementWriter::Column(const SqlNode& node, const SqlScope& scope) const {
  const std::string& name = node.names.back();
  const std::string* const table =
      node.names.size() > 1 ? &node.names[node.names.size() - 2] : nullptr;
  for (const SqlScope* at = &scope; at != nullptr; at = at->outer) {
    const SqlScope::Source* found_in = nullptr;
    const SqlColumn* found = nullptr;
    for (const SqlScope::Source& source : at->sources) {
      if (table != nullptr && !IsSameName(source.alias, *table)) continue;
      for (const SqlColumn& column : source.columns) {
        if (!IsSameName(column.name, name)) continue;
        if (found != nullptr) Raise("Ambiguous column name '" + name + "'.", 209, node);
        found_in = &source;
        found = &column;
      }
      if (table != nullptr && found == nullptr)
        Raise("Invalid column name '" + name + "'.", 207, node);
    }
    if (found == nullptr) continue;
    WrittenExpression column =
        MadeOf(SqlQuotedName(found_in->alias) + "." + SqlQuotedName(found->name), found->kind, {});
    column.is_constant = false;
    column.is_stored = IsDateKind(found->kind);
    column.is_searchable = found->is_searchable && at == &scope;
    if (at == &scope && !scope.groups.contains(column.sql)) column.loose_column = name;
    return column;
  }
  if (table == nullptr) Raise("Invalid column name '" + name + "'.", 207, node);
  Raise("The multi-part identifier \"" + *table + "." + name + "\" could not be bound.", 4104,
        node);
}

WrittenExpression StatementWriter::Operation(const SqlNode& node, const SqlScope& scope) {
  if (node.kind == SqlNodeKind::kOperation)
    return Operated(node, node.text, Scalar(node.operands[0], scope),
                    Scalar(node.operands[1], scope));
  const WrittenExpression operand = Scalar(node.operands[0], scope);
  if (node.operands[0].kind == SqlNodeKind::kNumber && !operand.sql.starts_with('-'))
    return MadeOf("(-" + operand.sql + ")", operand.kind, {&operand});
  return Operated(node, "-", MadeOf("0", SqlKind::kInt, {}), operand);
}

WrittenExpression StatementWriter::Operated(const SqlNode& node, const std::string& operation,
                                            const WrittenExpression& left,
                                            const WrittenExpression& right) const {
  SqlKind kind = CommonKind(left.kind, right.kind);
  const SqlKind other = std::min(left.kind, right.kind);
  const auto clash = [&](SqlKind one, SqlKind two) {
    Raise("The data types " + std::string{NameOf(one)} + " and " + std::string{NameOf(two)} +
              " are incompatible in the operator \"" + operation + "\".",
          402, node);
  };
  if (kind == SqlKind::kUnknown) {
    // A text makes it a text, a number a number.
    if (other == SqlKind::kUnknown)
      Raise("The type of what \"" + operation + "\" joins is not known: give it one by CAST.", 402,
            node);
    kind = std::max(other, IsNumberKind(other) ? SqlKind::kDecimal : SqlKind::kText);
  }
  if (kind == SqlKind::kText || kind == SqlKind::kNull) {
    if (operation != "+") clash(left.kind, right.kind);
    const WrittenExpression first = ConvertedTo(left, SqlKind::kText);
    const WrittenExpression second = ConvertedTo(right, SqlKind::kText);
    return MadeOf("(" + first.sql + "||" + second.sql + ")", SqlKind::kText, {&left, &right});
  }
  if (IsDateKind(kind)) {
    if (kind != SqlKind::kDateTime || (operation != "+" && operation != "-"))
      clash(left.kind, right.kind);
  } else if (operation == "&" || operation == "|" || operation == "^") {
    if (kind > SqlKind::kBigInt) clash(left.kind, right.kind);
  }
  kind = std::max(kind, SqlKind::kInt);
  const WrittenExpression first = ConvertedTo(left, kind);
  const WrittenExpression second = ConvertedTo(right, kind);
  return MadeOf(WrittenCall("px_operate",
                            {SqlStringLiteral(operation), NumberOf(kind), first.sql, second.sql}),
                kind, {&left, &right});
}

WrittenSql StatementWriter::OneColumn(const SqlNode& node, const SqlScope& scope) {
  WrittenSql query = Query(*node.query, &scope);
  if (query.columns.size() != 1)
    Raise(
        "Only one expression can be specified in the select list when the subquery is not "
        "introduced with EXISTS.",
        116, node);
  query.sql = "WITH px_rows(px_value) AS (" + query.sql + ") SELECT px_value FROM px_rows";
  return query;
}

WrittenExpression StatementWriter::Subquery(const SqlNode& node, const SqlScope& scope) {
  const WrittenSql query = OneColumn(node, scope);
  WrittenExpression value =
      MadeOf("(SELECT px_only(px_value) FROM (" + query.sql + "))", query.columns[0].kind, {});
  value.is_constant = false;
  value.is_stored = IsDateKind(value.kind);
  return value;
}

// ALL is false by one row that it is false for, and else unknown by one that it is unknown for; ANY
// the other way round.
WrittenExpression StatementWriter::Quantified(const SqlNode& node, const SqlScope& scope) {
  const WrittenExpression value = Scalar(node.operands[0], scope);
  const WrittenSql query = OneColumn(node, scope);
  const WrittenExpression compared = Compared(node.text, value, ValueOfRow(query));
  const std::string exists = "EXISTS (SELECT 1 FROM (" + query.sql + ") WHERE ";
  const std::string decisive = node.is_negated ? "NOT " + compared.sql : compared.sql;
  WrittenExpression condition =
      MadeOf("(CASE WHEN " + exists + decisive + ") THEN " + (node.is_negated ? "0" : "1") +
                 " WHEN " + exists + compared.sql + " IS NULL) THEN NULL ELSE " +
                 (node.is_negated ? "1" : "0") + " END)",
             SqlKind::kBit, {&value});
  condition.is_constant = false;
  return AsCondition(std::move(condition));
}

WrittenExpression StatementWriter::InList(const SqlNode& node, const SqlScope& scope) {
  const WrittenExpression value = Scalar(node.operands[0], scope);
  SqlKind kind = value.kind;
  std::vector<WrittenExpression> list;
  for (std::size_t i = 1; i < node.operands.size(); ++i) {
    list.push_back(Scalar(node.operands[i], scope));
    kind = CommonKind(kind, list.back().kind);
  }
  WrittenExpression whole = MadeOf("", SqlKind::kBit, {&value});
  std::string sql;
  if (kind == SqlKind::kUnknown) {
    for (const WrittenExpression& each : list) {
      const WrittenExpression compared = Compared("=", value, each);
      sql += (sql.empty() ? "(" : " OR ") + compared.sql;
      TakePart(whole, each);
    }
  } else {
    const WrittenExpression first = ConvertedTo(value, kind);
    sql = "(" + first.sql;
    if (kind == SqlKind::kText)
      sql += std::string{" COLLATE "} + (value.collation.empty() ? kSqlCollation : value.collation);
    char separator = '(';
    sql += " IN ";
    for (const WrittenExpression& each : list) {
      sql += std::exchange(separator, ',') + ConvertedTo(each, kind).sql;
      TakePart(whole, each);
    }
    sql += ")";
  }
  whole.sql = Negated(node.is_negated, sql + ")");
  return AsCondition(std::move(whole));
}

WrittenExpression StatementWriter::InQuery(const SqlNode& node, const SqlScope& scope) {
  const WrittenExpression value = Scalar(node.operands[0], scope);
  const WrittenSql query = OneColumn(node, scope);
  const WrittenExpression row = ValueOfRow(query);
  const SqlKind kind = CommonKind(value.kind, row.kind);
  if (kind == SqlKind::kUnknown) {
    SqlNode any = node;
    any.kind = SqlNodeKind::kQuantified;
    any.text = "=";
    any.is_negated = false;
    WrittenExpression condition = Quantified(any, scope);
    condition.sql = Negated(node.is_negated, condition.sql);
    return condition;
  }
  const WrittenExpression first = ConvertedTo(value, kind);
  std::string sql = "(" + first.sql;
  if (kind == SqlKind::kText)
    sql += std::string{" COLLATE "} + (value.collation.empty() ? kSqlCollation : value.collation);
  sql += " IN (SELECT " + ConvertedTo(row, kind).sql + " FROM (" + query.sql + ")))";
  WrittenExpression condition = MadeOf(Negated(node.is_negated, sql), SqlKind::kBit, {&value});
  condition.is_constant = false;
  return AsCondition(std::move(condition));
}

WrittenExpression StatementWriter::Like(const SqlNode& node, const SqlScope& scope) {
  const WrittenExpression text = ConvertedTo(Scalar(node.operands[0], scope), SqlKind::kText);
  const WrittenExpression pattern = ConvertedTo(Scalar(node.operands[1], scope), SqlKind::kText);
  const WrittenExpression escape =
      node.operands.size() > 2 ? ConvertedTo(Scalar(node.operands[2], scope), SqlKind::kText)
                               : MadeOf("''", SqlKind::kText, {});
  return AsCondition(
      MadeOf(Negated(node.is_negated, WrittenCall("px_like", {text.sql, pattern.sql, escape.sql})),
             SqlKind::kBit, {&text, &pattern, &escape}));
}

WrittenExpression StatementWriter::Case(const SqlNode& node, const SqlScope& scope) {
  const std::size_t first = node.has_operand ? 1 : 0;
  const std::size_t end = node.operands.size() - (node.has_else ? 1 : 0);
  std::vector<WrittenExpression> conditions;
  std::vector<WrittenExpression> results;
  SqlKind kind = SqlKind::kNull;
  const auto add_result = [&](const SqlNode& result) {
    results.push_back(Scalar(result, scope));
    kind = CommonKind(kind, results.back().kind);
  };
  for (std::size_t i = first; i < end; i += 2) {
    conditions.push_back(node.has_operand ? Compared("=", Scalar(node.operands[0], scope),
                                                     Scalar(node.operands[i], scope))
                                          : Condition(node.operands[i], scope));
    add_result(node.operands[i + 1]);
  }
  if (node.has_else) add_result(node.operands.back());

  WrittenExpression whole = MadeOf("", kind, {});
  std::string sql = "(CASE";
  for (std::size_t i = 0; i < results.size(); ++i) {
    const WrittenExpression result = ConvertedTo(results[i], kind);
    TakePart(whole, result);
    if (i < conditions.size()) {
      sql += " WHEN " + conditions[i].sql + " THEN " + result.sql;
      TakePart(whole, conditions[i]);
    } else {
      sql += " ELSE " + result.sql;
    }
  }
  whole.sql = sql + " END)";
  whole.collation.clear();
  return whole;
}

WrittenExpression StatementWriter::Cast(const SqlNode& node, const SqlScope& scope) {
  const WrittenExpression given = Scalar(node.operands[0], scope);
  const WrittenExpression value = given.is_stored ? ConvertedTo(given, given.kind) : given;
  const SqlType& type = node.type;
  WrittenExpression style = MadeOf("-1", SqlKind::kInt, {});
  if (node.operands.size() > 1) style = ConvertedTo(Scalar(node.operands[1], scope), SqlKind::kInt);
  return MadeOf(
      WrittenCall("px_cast", {value.sql, NumberOf(value.kind), NumberOf(type.kind),
                              SqlStringLiteral(type.name), std::to_string(type.length.value_or(-2)),
                              std::to_string(type.scale), style.sql}),
      type.kind, {&value, &style});
}

WrittenExpression StatementWriter::Window(const SqlNode& node, const SqlScope& scope) {
  if (node.text != "ROW_NUMBER" && node.text != "RANK" && node.text != "DENSE_RANK")
    Raise("The embedded database engine has no window function " + node.text + ".", 195, node);
  std::string sql = node.text + "() OVER (";
  WrittenExpression whole = MadeOf("", SqlKind::kBigInt, {});
  for (std::size_t i = 0; i < node.operands.size(); ++i) {
    const WrittenExpression value = Scalar(node.operands[i], scope);
    if (i == 0 && node.partition_count > 0) sql += "PARTITION BY ";
    if (i == node.partition_count) sql += " ORDER BY ";
    if (i != 0 && i != node.partition_count) sql += ",";
    sql += AsKey(value);
    if (i >= node.partition_count && node.descending[i - node.partition_count]) sql += " DESC";
    TakePart(whole, value);
  }
  whole.sql = sql + ")";
  whole.is_constant = false;
  whole.collation.clear();
  return whole;
}

}  // namespace pxscheduler
