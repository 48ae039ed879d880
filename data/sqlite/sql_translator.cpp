#include "data/sqlite/sql_translator.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "data/sqlite/sql_operand.h"
#include "data/sqlite/sql_settings.h"
#include "data/sqlite/sql_translation.h"
#include "data/sqlite/sql_words.h"

namespace pxscheduler {

// One level of parentheses, or one statement.
struct SqlTranslation::Level {
  std::string sql;
  std::size_t select_start = 0;  // in `sql`, of the SELECT that is being read
  std::string limit;             // of its TOP
  bool is_compound = false;      // a UNION or its kind has been seen
  bool is_select_list = false;
  int operands = 0;
  int words = 0;  // everything else
  SqlOperand last;
};

TranslatedSql SqlTranslation::Translate() {
  TranslatedSql result;
  result.lock_timeout_ms = TakeSettings(cursor_);
  while (cursor_.Peek().kind != SqlTokenKind::kEnd) {
    result.sql += Sequence(false).sql;
    if (cursor_.Peek().kind == SqlTokenKind::kEnd) break;
    result.sql += cursor_.Peek().text;  // ";", or a parenthesis that nothing opened
    cursor_.Advance();
  }
  return result;
}

// Everything up to the level's closing parenthesis, a comma where the level is an argument, a ";"
// or the end.
SqlOperand SqlTranslation::Sequence(bool is_argument) {
  const Nesting nesting{depth_};
  Level level;
  while (cursor_.Peek().kind != SqlTokenKind::kEnd && !cursor_.SeesSymbol(")") &&
         !cursor_.SeesSymbol(";") && !(is_argument && cursor_.SeesSymbol(",")) &&
         !(case_depth_ > 0 && SeesCaseWord()))
    Step(level);
  EndSelect(level);
  SqlOperand result;
  if (level.operands == 1 && level.words == 0) result = level.last;
  result.sql = level.sql;
  return result;
}

bool SqlTranslation::SeesCaseWord() const {
  return cursor_.SeesWord("WHEN") || cursor_.SeesWord("THEN") || cursor_.SeesWord("ELSE") ||
         cursor_.SeesWord("END");
}

void SqlTranslation::Step(Level& level) {
  if (level.is_select_list && TakeAssignedAlias(level)) return;
  if (cursor_.Peek().kind == SqlTokenKind::kName) {
    if (TakeHints() || TakeClause(level)) return;
    const std::string upper = UpperAscii(cursor_.Peek().text);
    if (IsKeyword(upper) && !IsOneOf(upper, {"CASE", "NULL"}) && !cursor_.SeesSymbol("(", 1))
      return TakeKeyword(upper, level);
    if (IsKeyword(upper) && !IsOneOf(upper, {"CASE", "LEFT", "NULL", "RIGHT"}))
      return TakeKeyword(upper, level);
  } else if (cursor_.Peek().kind == SqlTokenKind::kSymbol && !cursor_.SeesSymbol("(") &&
             !cursor_.SeesSymbol("-") && !cursor_.SeesSymbol("+")) {
    AppendSqlPiece(cursor_.Peek().text, level.sql);
    cursor_.Advance();
    ++level.words;
    return;
  }
  level.last = Comparison();
  ++level.operands;
  AppendSqlPiece(level.last.sql, level.sql);
}

// "WITH (NOLOCK)", "(NOLOCK)" after a table, and OPTION (...).
bool SqlTranslation::TakeHints() {
  if ((!cursor_.SeesWord("WITH") && !cursor_.SeesWord("OPTION")) || !cursor_.SeesSymbol("(", 1))
    return false;
  cursor_.Advance();
  cursor_.SkipParentheses();
  return true;
}

// SELECT, what ends its list, and what ends it.
bool SqlTranslation::TakeClause(Level& level) {
  if (cursor_.SeesWord("SELECT")) {
    level.select_start = level.sql.size();
    level.is_select_list = true;
    ++level.words;
    AppendSqlPiece("SELECT", level.sql);
    cursor_.Advance();
    for (const char* word : {"ALL", "DISTINCT"})
      if (cursor_.TakeWord(word)) AppendSqlPiece(word, level.sql);
    if (cursor_.SeesWord("TOP")) TakeTop(level);
    return true;
  }
  if (cursor_.SeesWord("FROM") || cursor_.SeesWord("WHERE") || cursor_.SeesWord("GROUP") ||
      cursor_.SeesWord("INTO"))
    level.is_select_list = false;
  const bool is_set_operator =
      cursor_.SeesWord("UNION") || cursor_.SeesWord("EXCEPT") || cursor_.SeesWord("INTERSECT");
  if (is_set_operator) level.is_compound = true;
  if (is_set_operator || (level.is_compound && cursor_.SeesWord("ORDER"))) EndSelect(level);
  return false;
}

void SqlTranslation::TakeTop(Level& level) {
  if (cursor_.Peek(1).kind == SqlTokenKind::kNumber && !cursor_.SeesWord("PERCENT", 2) &&
      !cursor_.SeesWord("WITH", 2)) {
    level.limit = cursor_.Peek(1).text;
    cursor_.Advance(2);
  } else if (cursor_.SeesSymbol("(", 1)) {
    cursor_.Advance(2);
    level.limit = "(" + Sequence(false).sql + ")";
    if (!cursor_.TakeSymbol(")") || cursor_.SeesWord("PERCENT") || cursor_.SeesWord("WITH"))
      cursor_.RaiseSyntaxError();
  }
}

// SQLite allows one LIMIT, at the end of a compound, so a member of one becomes a sub-select.
void SqlTranslation::EndSelect(Level& level) {
  level.is_select_list = false;
  if (level.limit.empty()) return;
  const std::string limit = " LIMIT " + std::exchange(level.limit, {});
  if (!level.is_compound) {
    level.sql += limit;
    return;
  }
  level.sql.insert(level.select_start, " SELECT * FROM (");
  level.sql += limit + ")";
}

// "Name = value" in a select list is a value with a name.
bool SqlTranslation::TakeAssignedAlias(Level& level) {
  const bool is_item_start = level.sql.ends_with(',') || level.sql.ends_with("SELECT") ||
                             level.sql.ends_with("DISTINCT") || level.sql.ends_with("ALL");
  if (!is_item_start || !cursor_.SeesSymbol("=", 1) ||
      (!cursor_.SeesName() && cursor_.Peek().kind != SqlTokenKind::kString))
    return false;
  const std::string name = SqlQuotedName(cursor_.Peek().text);
  cursor_.Advance(2);
  AppendSqlPiece(Additive().sql + " AS " + name, level.sql);
  ++level.words;
  return true;
}

void SqlTranslation::TakeKeyword(const std::string& upper, Level& level) {
  ++level.words;
  cursor_.Advance();
  AppendSqlPiece(upper, level.sql);
  if (upper != "AS" || cursor_.Peek().kind != SqlTokenKind::kString) return;
  AppendSqlPiece(SqlQuotedName(cursor_.Peek().text), level.sql);
  cursor_.Advance();
}

void AppendSqlPiece(std::string_view piece, std::string& sql) {
  if (!sql.empty() && sql.back() != '(' && piece != "," && piece != ")") sql += ' ';
  sql += piece;
}

TranslatedSql TranslateSql(std::string_view sql, const SqlSchema& schema) {
  return SqlTranslation{sql, schema}.Translate();
}

}  // namespace pxscheduler
