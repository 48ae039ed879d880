#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "data/sqlite/sql_functions.h"
#include "data/sqlite/sql_operand.h"
#include "data/sqlite/sql_translation.h"
#include "data/sqlite/sql_words.h"

namespace pxscheduler {

SqlOperand SqlTranslation::Comparison() {
  SqlOperand left = Additive();
  const bool is_negated = cursor_.SeesWord("NOT");
  const std::size_t word = is_negated ? 1 : 0;
  if (IsComparison(cursor_.Peek())) {
    const std::string symbol = cursor_.Take().text;
    for (const char* quantifier : {"ALL", "ANY", "SOME"})
      if (cursor_.SeesWord(quantifier) && cursor_.SeesSymbol("(", 1)) cursor_.RaiseSyntaxError();
    return CompareOperands(std::move(left), symbol, Additive());
  }
  if (cursor_.SeesWord("BETWEEN", word)) {
    cursor_.Advance(word + 1);
    SqlOperand low = Additive();
    cursor_.RequireWord("AND");
    return CompareWithRange(std::move(left), is_negated, std::move(low), Additive());
  }
  if (cursor_.SeesWord("IN", word) && cursor_.SeesSymbol("(", word + 1) &&
      !cursor_.SeesWord("SELECT", word + 2)) {
    cursor_.Advance(word + 2);
    return CompareWithList(std::move(left), is_negated, Arguments());
  }
  return left;
}

SqlOperand SqlTranslation::Additive() {
  SqlOperand left = Term();
  while (cursor_.SeesSymbol("+") || cursor_.SeesSymbol("-")) {
    const bool is_sum = cursor_.Take().text == "+";
    left = AddOperands(left, Term(), is_sum);
  }
  return left;
}

SqlOperand SqlTranslation::Term() {
  SqlOperand left = Unary();
  while (cursor_.SeesSymbol("*") || cursor_.SeesSymbol("/") || cursor_.SeesSymbol("%")) {
    left.sql += cursor_.Peek().text;
    cursor_.Advance();
    left = {left.sql + Unary().sql, SqlKind::kNumber, {}, false, false};
  }
  return left;
}

SqlOperand SqlTranslation::Unary() {
  std::string signs;
  while (cursor_.SeesSymbol("-") || cursor_.SeesSymbol("+") || cursor_.SeesSymbol("~")) {
    if (!cursor_.SeesSymbol("+")) signs += " " + cursor_.Peek().text;
    cursor_.Advance();
  }
  SqlOperand operand = Primary();
  if (signs.empty()) return operand;
  return {signs + operand.sql, SqlKind::kNumber, {}, false, false};
}

SqlOperand SqlTranslation::Primary() {
  SqlOperand operand = PrimaryWithoutCollation();
  if (!cursor_.TakeWord("COLLATE")) return operand;
  if (!cursor_.SeesName()) cursor_.RaiseSyntaxError();
  operand.sql += " COLLATE " + SqlQuotedName(cursor_.Take().text);
  operand.has_collation = true;
  return operand;
}

SqlOperand SqlTranslation::PrimaryWithoutCollation() {
  const SqlToken token = cursor_.Peek();
  if (token.kind == SqlTokenKind::kString) {
    cursor_.Advance();
    return {SqlStringLiteral(token.text), SqlKind::kText, token.text, false, false};
  }
  if (token.kind == SqlTokenKind::kNumber) {
    cursor_.Advance();
    return {token.text, SqlKind::kNumber, {}, false, false};
  }
  if (cursor_.SeesSymbol("(")) return Parenthesized();
  if (cursor_.SeesWord("CASE")) return Case();
  if (cursor_.SeesWord("NULL")) {
    cursor_.Advance();
    return {"NULL", SqlKind::kUnknown, {}, false, false};
  }
  const bool is_name = token.kind == SqlTokenKind::kQuotedName ||
                       (token.kind == SqlTokenKind::kName &&
                        (!IsKeyword(UpperAscii(token.text)) || cursor_.SeesSymbol("(", 1)));
  if (is_name) return Name();
  cursor_.RaiseSyntaxError();
}

SqlOperand SqlTranslation::Parenthesized() {
  cursor_.Advance();
  const bool is_select = cursor_.SeesWord("SELECT");
  const int outer_case_depth = std::exchange(case_depth_, 0);
  SqlOperand inner = Sequence(false);
  case_depth_ = outer_case_depth;
  cursor_.RequireSymbol(")");
  inner.sql = "(" + inner.sql + ")";
  inner.is_select = is_select;
  if (is_select) inner.kind = SqlKind::kUnknown;
  return inner;
}

SqlOperand SqlTranslation::Case() {
  cursor_.Advance();
  ++case_depth_;
  std::string sql = "CASE";
  while (!cursor_.SeesWord("END")) {
    if (cursor_.Peek().kind == SqlTokenKind::kEnd) cursor_.RaiseSyntaxError();
    const bool is_when = cursor_.SeesWord("WHEN");
    if (SeesCaseWord()) {
      AppendSqlPiece(UpperAscii(cursor_.Peek().text), sql);
      cursor_.Advance();
    }
    if (SeesCaseWord() || cursor_.SeesSymbol(")") || cursor_.SeesSymbol(";"))
      cursor_.RaiseSyntaxError();
    const SqlOperand part = Sequence(false);
    const bool is_text = is_when && part.literal;
    AppendSqlPiece(is_text ? part.sql + " COLLATE " + kSqlCollation : part.sql, sql);
  }
  cursor_.Advance();
  --case_depth_;
  return {sql + " END", SqlKind::kUnknown, {}, false, false};
}

// A column, a table or a function, with what stands before it: [Agency].dbo.Clients.Email.
SqlOperand SqlTranslation::Name() {
  std::vector<SqlToken> parts;
  do {
    if (cursor_.SeesSymbol(".")) {
      parts.push_back({SqlTokenKind::kName, ""});
    } else {
      if (!cursor_.SeesName() && !cursor_.SeesSymbol("*")) cursor_.RaiseSyntaxError();
      parts.push_back(cursor_.Take());
    }
  } while (cursor_.TakeSymbol("."));
  const auto is_part = [&parts](std::string_view upper) {
    return parts.size() > 1 && UpperAscii(parts[0].text) == upper;
  };
  if (parts.size() > 2 && is_part(UpperAscii(schema_.database))) parts.erase(parts.begin());
  if (is_part("DBO") || is_part("")) parts.erase(parts.begin());
  if (cursor_.SeesSymbol("(")) {
    if (cursor_.Peek(1).kind == SqlTokenKind::kName &&
        IsTableHint(UpperAscii(cursor_.Peek(1).text)))
      cursor_.SkipParentheses();
    else if (parts.size() == 1)
      return Function(parts[0]);
  }
  SqlOperand operand{"", SqlKind::kColumn, {}, false, false};
  for (const SqlToken& part : parts) {
    if (!operand.sql.empty()) operand.sql += '.';
    operand.sql += part.kind == SqlTokenKind::kQuotedName ? SqlQuotedName(part.text) : part.text;
  }
  const std::string column = UpperAscii(parts.back().text);
  if (column == "CURRENT_TIMESTAMP" && parts.size() == 1)
    return {"GETDATE()", SqlKind::kDate, {}, false, false};
  const auto type = schema_.column_types.find(column);
  if (type == schema_.column_types.end()) return operand;
  if (type->second == ColumnType::kDateTime) operand.kind = SqlKind::kDate;
  if (type->second != ColumnType::kDateTime && type->second != ColumnType::kText)
    operand.kind = SqlKind::kNumber;
  return operand;
}

}  // namespace pxscheduler
