#include "platform/sqlite/sql_translator.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/sqlite/sql_functions.h"
#include "platform/sqlite/sql_operand.h"
#include "platform/sqlite/sql_settings.h"
#include "platform/sqlite/sql_words.h"

namespace pxscheduler {
namespace {

constexpr int kDeepestNesting = 200;

class Translator {
 public:
  Translator(std::string_view sql, const SqlSchema& schema) : cursor_{sql}, schema_{schema} {}

  TranslatedSql Translate() {
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

 private:
  // One level of parentheses, or one statement.
  struct Level {
    std::string sql;
    std::size_t select_start = 0;  // in `sql`, of the SELECT that is being read
    std::string limit;             // of its TOP
    bool is_compound = false;      // a UNION or its kind has been seen
    bool is_select_list = false;
    int operands = 0;
    int words = 0;  // everything else
    SqlOperand last;
  };

  // Nesting that is counted as long as it lasts.
  class Nesting {
   public:
    explicit Nesting(int& depth) : depth_{depth} {
      if (++depth_ > kDeepestNesting)
        throw SqlSyntaxError{"Some part of your SQL statement is nested too deeply."};
    }
    Nesting(const Nesting&) = delete;
    Nesting& operator=(const Nesting&) = delete;
    ~Nesting() { --depth_; }

   private:
    int& depth_;
  };

  static void Emit(std::string_view piece, std::string& sql) {
    if (!sql.empty() && sql.back() != '(' && piece != "," && piece != ")") sql += ' ';
    sql += piece;
  }

  // Everything up to the level's closing parenthesis, a comma where the level is an argument, a ";"
  // or the end.
  SqlOperand Sequence(bool is_argument) {
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

  bool SeesCaseWord() const {
    return cursor_.SeesWord("WHEN") || cursor_.SeesWord("THEN") || cursor_.SeesWord("ELSE") ||
           cursor_.SeesWord("END");
  }

  void Step(Level& level) {
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
      Emit(cursor_.Peek().text, level.sql);
      cursor_.Advance();
      ++level.words;
      return;
    }
    level.last = Comparison();
    ++level.operands;
    Emit(level.last.sql, level.sql);
  }

  // "WITH (NOLOCK)", "(NOLOCK)" after a table, and OPTION (...).
  bool TakeHints() {
    if ((!cursor_.SeesWord("WITH") && !cursor_.SeesWord("OPTION")) || !cursor_.SeesSymbol("(", 1))
      return false;
    cursor_.Advance();
    cursor_.SkipParentheses();
    return true;
  }

  // SELECT, what ends its list, and what ends it.
  bool TakeClause(Level& level) {
    if (cursor_.SeesWord("SELECT")) {
      level.select_start = level.sql.size();
      level.is_select_list = true;
      ++level.words;
      Emit("SELECT", level.sql);
      cursor_.Advance();
      for (const char* word : {"ALL", "DISTINCT"})
        if (cursor_.TakeWord(word)) Emit(word, level.sql);
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

  void TakeTop(Level& level) {
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
  static void EndSelect(Level& level) {
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
  bool TakeAssignedAlias(Level& level) {
    const bool is_item_start = level.sql.ends_with(',') || level.sql.ends_with("SELECT") ||
                               level.sql.ends_with("DISTINCT") || level.sql.ends_with("ALL");
    if (!is_item_start || !cursor_.SeesSymbol("=", 1) ||
        (!cursor_.SeesName() && cursor_.Peek().kind != SqlTokenKind::kString))
      return false;
    const std::string name = SqlQuotedName(cursor_.Peek().text);
    cursor_.Advance(2);
    Emit(Additive().sql + " AS " + name, level.sql);
    ++level.words;
    return true;
  }

  void TakeKeyword(const std::string& upper, Level& level) {
    ++level.words;
    cursor_.Advance();
    Emit(upper, level.sql);
    if (upper != "AS" || cursor_.Peek().kind != SqlTokenKind::kString) return;
    Emit(SqlQuotedName(cursor_.Peek().text), level.sql);
    cursor_.Advance();
  }

  SqlOperand Comparison() {
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

  // What stands between commas, up to the parenthesis that closes it.
  std::vector<SqlOperand> Arguments() {
    std::vector<SqlOperand> arguments;
    if (cursor_.TakeSymbol(")")) return arguments;
    do {
      arguments.push_back(Sequence(true));
    } while (cursor_.TakeSymbol(","));
    cursor_.RequireSymbol(")");
    return arguments;
  }

  SqlOperand Additive() {
    SqlOperand left = Term();
    while (cursor_.SeesSymbol("+") || cursor_.SeesSymbol("-")) {
      const bool is_sum = cursor_.Take().text == "+";
      left = AddOperands(left, Term(), is_sum);
    }
    return left;
  }

  SqlOperand Term() {
    SqlOperand left = Unary();
    while (cursor_.SeesSymbol("*") || cursor_.SeesSymbol("/") || cursor_.SeesSymbol("%")) {
      left.sql += cursor_.Peek().text;
      cursor_.Advance();
      left = {left.sql + Unary().sql, SqlKind::kNumber, {}, false, false};
    }
    return left;
  }

  SqlOperand Unary() {
    std::string signs;
    while (cursor_.SeesSymbol("-") || cursor_.SeesSymbol("+") || cursor_.SeesSymbol("~")) {
      if (!cursor_.SeesSymbol("+")) signs += " " + cursor_.Peek().text;
      cursor_.Advance();
    }
    SqlOperand operand = Primary();
    if (signs.empty()) return operand;
    return {signs + operand.sql, SqlKind::kNumber, {}, false, false};
  }

  SqlOperand Primary() {
    SqlOperand operand = PrimaryWithoutCollation();
    if (!cursor_.TakeWord("COLLATE")) return operand;
    if (!cursor_.SeesName()) cursor_.RaiseSyntaxError();
    operand.sql += " COLLATE " + SqlQuotedName(cursor_.Take().text);
    operand.has_collation = true;
    return operand;
  }

  SqlOperand PrimaryWithoutCollation() {
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

  SqlOperand Parenthesized() {
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

  SqlOperand Case() {
    cursor_.Advance();
    ++case_depth_;
    std::string sql = "CASE";
    while (!cursor_.SeesWord("END")) {
      if (cursor_.Peek().kind == SqlTokenKind::kEnd) cursor_.RaiseSyntaxError();
      const bool is_when = cursor_.SeesWord("WHEN");
      if (SeesCaseWord()) {
        Emit(UpperAscii(cursor_.Peek().text), sql);
        cursor_.Advance();
      }
      if (SeesCaseWord() || cursor_.SeesSymbol(")") || cursor_.SeesSymbol(";"))
        cursor_.RaiseSyntaxError();
      const SqlOperand part = Sequence(false);
      const bool is_text = is_when && part.literal;
      Emit(is_text ? part.sql + " COLLATE " + kSqlCollation : part.sql, sql);
    }
    cursor_.Advance();
    --case_depth_;
    return {sql + " END", SqlKind::kUnknown, {}, false, false};
  }

  // A column, a table or a function, with what stands before it: [Agency].dbo.Clients.Email.
  SqlOperand Name() {
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

  SqlOperand Function(const SqlToken& name) {
    cursor_.Advance();
    const std::string upper = UpperAscii(name.text);
    const int outer_case_depth = std::exchange(case_depth_, 0);
    SqlOperand result = name.kind == SqlTokenKind::kQuotedName
                            ? Call(SqlQuotedName(name.text), upper)
                        : upper == "CONVERT" ? Convert()
                        : upper == "CAST"    ? Cast()
                                             : Call(NameForSqlite(upper, name.text), upper);
    case_depth_ = outer_case_depth;
    return result;
  }

  // LEFT, RIGHT and ISNULL are keywords of SQLite.
  static std::string NameForSqlite(const std::string& upper, const std::string& name) {
    if (IsOneOf(upper, {"LEFT", "RIGHT", "ISNULL"})) return SqlQuotedName(upper);
    return upper == "SYSDATETIME" ? "GETDATE" : name;
  }

  SqlOperand Call(const std::string& function, const std::string& upper) {
    SqlOperand result{function + "(", KindOfSqlFunction(upper), {}, false, false};
    if (IsOneOf(upper, {"DATEDIFF", "DATEADD", "DATEPART"}) &&
        cursor_.Peek().kind == SqlTokenKind::kName) {
      result.sql += SqlStringLiteral(cursor_.Take().text) + ",";
      cursor_.RequireSymbol(",");
    }
    std::vector<SqlOperand> arguments = Arguments();
    if (IsOneOf(upper, {"ISNULL", "COALESCE", "NULLIF", "MIN", "MAX"}))
      result.kind = ShareKind(arguments);
    for (std::size_t at = 0; at < arguments.size(); ++at)
      result.sql += (at == 0 ? "" : ",") + arguments[at].sql;
    result.sql += ')';
    return result;
  }

  // The kind of a function that gives one of its arguments: a date where one of them is.
  static SqlKind ShareKind(std::vector<SqlOperand>& arguments) {
    SqlKind kind = SqlKind::kUnknown;
    for (SqlOperand& argument : arguments) {
      for (SqlOperand& other : arguments) AlignLiteral(argument, other);
      const bool is_known = argument.kind != SqlKind::kColumn;
      if (is_known && (kind == SqlKind::kUnknown || argument.kind == SqlKind::kDate))
        kind = argument.kind;
    }
    return kind;
  }

  // "name", "name(length)" or "name(precision, scale)", as the arguments of CONVERT.
  std::string Type(SqlKind& kind) {
    if (!cursor_.SeesName()) cursor_.RaiseSyntaxError();
    const std::string name = UpperAscii(cursor_.Take().text);
    std::array<std::string, 2> sizes = {"NULL", "NULL"};
    if (cursor_.TakeSymbol("(")) {
      for (std::string& size : sizes) {
        if (cursor_.Peek().kind != SqlTokenKind::kNumber && !cursor_.SeesWord("MAX"))
          cursor_.RaiseSyntaxError();
        size = cursor_.SeesWord("MAX") ? "-1" : cursor_.Peek().text;
        cursor_.Advance();
        if (!cursor_.TakeSymbol(",")) break;
      }
      cursor_.RequireSymbol(")");
    }
    kind = IsDateType(name)                         ? SqlKind::kDate
           : name.find("CHAR") != std::string::npos ? SqlKind::kText
                                                    : SqlKind::kNumber;
    return SqlStringLiteral(name) + "," + sizes[0] + "," + sizes[1];
  }

  static SqlOperand Converted(const std::string& type, SqlKind kind, const SqlOperand& value,
                              std::string style) {
    // Without a style a date becomes text in style 0.
    if (style.empty())
      style = kind == SqlKind::kText && value.kind == SqlKind::kDate ? "0" : "NULL";
    return {"CONVERT(" + type + "," + value.sql + "," + style + ")", kind, {}, false, false};
  }

  SqlOperand Convert() {
    SqlKind kind{};
    const std::string type = Type(kind);
    cursor_.RequireSymbol(",");
    const SqlOperand value = Sequence(true);
    const std::string style = cursor_.TakeSymbol(",") ? Sequence(true).sql : "";
    cursor_.RequireSymbol(")");
    return Converted(type, kind, value, style);
  }

  SqlOperand Cast() {
    const Nesting nesting{depth_};
    const SqlOperand value = Additive();
    cursor_.RequireWord("AS");
    SqlKind kind{};
    const std::string type = Type(kind);
    cursor_.RequireSymbol(")");
    return Converted(type, kind, value, "");
  }

  SqlCursor cursor_;
  const SqlSchema& schema_;
  int depth_ = 0;
  int case_depth_ = 0;
};

}  // namespace

TranslatedSql TranslateSql(std::string_view sql, const SqlSchema& schema) {
  return Translator{sql, schema}.Translate();
}

}  // namespace pxscheduler
