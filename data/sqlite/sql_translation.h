#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "data/sqlite/sql_cursor.h"
#include "data/sqlite/sql_operand.h"
#include "data/sqlite/sql_schema.h"
#include "data/sqlite/sql_translator.h"

namespace pxscheduler {

// Inside of TranslateSql: reads the statements of one text from left to right, once, and writes
// each piece as SQLite takes it.
class SqlTranslation {
 public:
  SqlTranslation(std::string_view sql, const SqlSchema& schema) : cursor_{sql}, schema_{schema} {}

  TranslatedSql Translate();

 private:
  struct Level;
  class Nesting;

  // Statements and their clauses: sql_translator.cpp.
  SqlOperand Sequence(bool is_argument);
  bool SeesCaseWord() const;
  void Step(Level& level);
  bool TakeHints();
  bool TakeClause(Level& level);
  void TakeTop(Level& level);
  static void EndSelect(Level& level);
  bool TakeAssignedAlias(Level& level);
  void TakeKeyword(const std::string& upper, Level& level);

  // Values, from what binds least to what binds most: sql_expressions.cpp.
  SqlOperand Comparison();
  SqlOperand Additive();
  SqlOperand Term();
  SqlOperand Unary();
  SqlOperand Primary();
  SqlOperand PrimaryWithoutCollation();
  SqlOperand Parenthesized();
  SqlOperand Case();
  SqlOperand Name();

  // Functions, the cursor behind the parenthesis that opens: sql_calls.cpp.
  SqlOperand Function(const SqlToken& name);
  std::vector<SqlOperand> Arguments();
  SqlOperand Call(const std::string& function, const std::string& upper);
  std::string Type(SqlKind& kind);
  SqlOperand Convert();
  SqlOperand Cast();

  SqlCursor cursor_;
  const SqlSchema& schema_;
  int depth_ = 0;
  int case_depth_ = 0;
};

// Nesting that is counted as long as it lasts.
class SqlTranslation::Nesting {
 public:
  explicit Nesting(int& depth) : depth_{depth} {
    if (++depth_ > kDeepest)
      throw SqlSyntaxError{"Some part of your SQL statement is nested too deeply."};
  }
  Nesting(const Nesting&) = delete;
  Nesting& operator=(const Nesting&) = delete;
  ~Nesting() { --depth_; }

 private:
  static constexpr int kDeepest = 200;

  int& depth_;
};

// Appends a piece, with a blank before it where one may stand.
void AppendSqlPiece(std::string_view piece, std::string& sql);

}  // namespace pxscheduler
