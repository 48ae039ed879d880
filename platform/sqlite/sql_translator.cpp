#include "platform/sqlite/sql_translator.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <initializer_list>
#include <utility>
#include <vector>

#include "platform/sqlite/sql_dates.h"
#include "platform/sqlite/sql_functions.h"
#include "platform/sqlite/sql_token.h"

namespace pxscheduler {
namespace {

constexpr int kDeepestNesting = 200;

// What an operand of an expression is known to be.
enum class OperandKind { kUnknown, kColumn, kNumber, kDate, kText };

struct Operand {
  std::string sql;
  OperandKind kind = OperandKind::kUnknown;
  std::optional<std::string> literal;  // the text, when the operand is one string literal
  bool is_select = false;              // a sub-select with its parentheses
  bool has_collation = false;
};

bool IsOneOf(std::string_view word, std::initializer_list<std::string_view> words) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

// Words that never are a column, a table or a function.
bool IsKeyword(std::string_view upper) {
  static constexpr auto kKeywords = std::to_array<std::string_view>(
      {"ALL",       "AND",    "AS",     "ASC",      "BETWEEN", "BY",    "CASE",   "COLLATE",
       "CROSS",     "DELETE", "DESC",   "DISTINCT", "ELSE",    "END",   "ESCAPE", "EXCEPT",
       "EXISTS",    "FROM",   "FULL",   "GROUP",    "HAVING",  "IN",    "INNER",  "INSERT",
       "INTERSECT", "INTO",   "IS",     "JOIN",     "LEFT",    "LIKE",  "NOT",    "NULL",
       "ON",        "OR",     "ORDER",  "OUTER",    "OVER",    "RIGHT", "SELECT", "SET",
       "THEN",      "UNION",  "UPDATE", "USING",    "VALUES",  "WHEN",  "WHERE",  "WITH"});
  return std::find(kKeywords.begin(), kKeywords.end(), upper) != kKeywords.end();
}

bool IsTableHint(std::string_view upper) {
  return IsOneOf(upper, {"NOLOCK", "READUNCOMMITTED", "READCOMMITTED", "READPAST", "HOLDLOCK",
                         "NOWAIT", "ROWLOCK", "PAGLOCK", "TABLOCK", "UPDLOCK", "SERIALIZABLE",
                         "REPEATABLEREAD", "READCOMMITTEDLOCK"});
}

bool IsComparison(const SqlToken& token) {
  return token.kind == SqlTokenKind::kSymbol &&
         IsOneOf(token.text, {"=", "<", ">", "<=", ">=", "<>", "!="});
}

bool IsDateType(std::string_view upper) {
  return IsOneOf(upper, {"DATE", "DATETIME", "DATETIME2", "SMALLDATETIME"});
}

OperandKind KindOfFunction(std::string_view upper) {
  if (IsOneOf(upper, {"GETDATE", "DATEADD"})) return OperandKind::kDate;
  if (IsOneOf(upper, {"YEAR", "MONTH", "DAY", "DATEPART", "DATEDIFF", "LEN", "CHARINDEX", "COUNT",
                      "ABS", "ROUND", "AVG"}))
    return OperandKind::kNumber;
  if (IsOneOf(upper, {"SUBSTRING", "LEFT", "RIGHT", "UPPER", "LOWER", "CONCAT", "LTRIM", "RTRIM",
                      "REPLACE"}))
    return OperandKind::kText;
  return OperandKind::kUnknown;
}

class Translator {
 public:
  Translator(std::vector<SqlToken> tokens, const SqlSchema& schema)
      : tokens_{std::move(tokens)}, schema_{schema} {}

  TranslatedSql Translate() {
    TranslatedSql result;
    while (TakeSymbol(";") || TakeSet(result.lock_timeout_ms)) {
    }
    while (Peek().kind != SqlTokenKind::kEnd) {
      result.sql += Sequence(false).sql;
      if (Peek().kind == SqlTokenKind::kEnd) break;
      result.sql += Peek().text;  // ";", or a parenthesis that nothing opened
      Advance();
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
    Operand last;
  };

  // Never past the end.
  void Advance(std::size_t count = 1) { at_ = std::min(at_ + count, tokens_.size() - 1); }

  const SqlToken& Peek(std::size_t ahead = 0) const {
    return tokens_[std::min(at_ + ahead, tokens_.size() - 1)];
  }

  bool SeesSymbol(std::string_view symbol, std::size_t ahead = 0) const {
    return Peek(ahead).kind == SqlTokenKind::kSymbol && Peek(ahead).text == symbol;
  }

  bool SeesWord(std::string_view upper, std::size_t ahead = 0) const {
    return Peek(ahead).kind == SqlTokenKind::kName && UpperAscii(Peek(ahead).text) == upper;
  }

  bool TakeSymbol(std::string_view symbol) {
    const bool sees = SeesSymbol(symbol);
    if (sees) Advance();
    return sees;
  }

  bool TakeWord(std::string_view upper) {
    const bool sees = SeesWord(upper);
    if (sees) Advance();
    return sees;
  }

  static void Emit(std::string_view piece, std::string& sql) {
    if (!sql.empty() && sql.back() != '(' && piece != "," && piece != ")") sql += ' ';
    sql += piece;
  }

  [[noreturn]] void RaiseSyntaxError() const {
    const bool is_end = Peek().kind == SqlTokenKind::kEnd;
    const std::string& near = is_end && at_ > 0 ? tokens_[at_ - 1].text : Peek().text;
    throw SqlSyntaxError{"Incorrect syntax near '" + near + "'."};
  }

  // SET statements in front of the query. Nothing but the lock time-out has a meaning here.
  bool TakeSet(std::optional<std::int64_t>& lock_timeout) {
    if (!TakeWord("SET")) return false;
    if (TakeWord("LOCK_TIMEOUT")) {
      const bool is_negative = TakeSymbol("-");
      const SqlToken& number = Peek();
      std::int64_t value = 0;
      const char* const end = number.text.data() + number.text.size();
      const auto result = std::from_chars(number.text.data(), end, value);
      if (number.kind != SqlTokenKind::kNumber || result.ec != std::errc{} || result.ptr != end ||
          (is_negative && value != 1) || value > 2147483647)
        RaiseSyntaxError();
      Advance();
      lock_timeout = is_negative ? -1 : value;
    } else if (TakeWord("TRANSACTION")) {
      if (!TakeWord("ISOLATION") || !TakeWord("LEVEL")) RaiseSyntaxError();
      if (!TakeWord("SNAPSHOT") && !TakeWord("SERIALIZABLE")) Advance(2);  // "READ COMMITTED"
    } else if (TakeWord("DATEFIRST") || TakeWord("ROWCOUNT")) {
      // A row limit or another first day of the week would change what the query means.
      --at_;
      RaiseSyntaxError();
    } else {
      if (Peek().kind != SqlTokenKind::kName || Peek().text.starts_with('@')) RaiseSyntaxError();
      Advance();
      if (!TakeWord("ON") && !TakeWord("OFF")) RaiseSyntaxError();
    }
    return true;
  }

  // Everything up to the level's closing parenthesis, a comma where the level is an argument, a ";"
  // or the end.
  Operand Sequence(bool is_argument) {
    if (++depth_ > kDeepestNesting)
      throw SqlSyntaxError{"Some part of your SQL statement is nested too deeply."};
    Level level;
    while (Peek().kind != SqlTokenKind::kEnd && !SeesSymbol(")") && !SeesSymbol(";") &&
           !(is_argument && SeesSymbol(",")) && !(case_depth_ > 0 && SeesCaseWord()))
      Step(level);
    EndSelect(level);
    --depth_;
    Operand result;
    if (level.operands == 1 && level.words == 0) result = level.last;
    result.sql = level.sql;
    return result;
  }

  bool SeesCaseWord() const {
    return SeesWord("WHEN") || SeesWord("THEN") || SeesWord("ELSE") || SeesWord("END");
  }

  void Step(Level& level) {
    if (level.is_select_list && TakeAssignedAlias(level)) return;
    if (Peek().kind == SqlTokenKind::kName) {
      if (TakeHints() || TakeClause(level)) return;
      const std::string upper = UpperAscii(Peek().text);
      if (IsKeyword(upper) && !IsOneOf(upper, {"CASE", "NULL"}) && !SeesSymbol("(", 1))
        return TakeKeyword(upper, level);
      if (IsKeyword(upper) && !IsOneOf(upper, {"CASE", "LEFT", "NULL", "RIGHT"}))
        return TakeKeyword(upper, level);
    } else if (Peek().kind == SqlTokenKind::kSymbol && !SeesSymbol("(") && !SeesSymbol("-") &&
               !SeesSymbol("+")) {
      Emit(Peek().text, level.sql);
      Advance();
      ++level.words;
      return;
    }
    level.last = Comparison();
    ++level.operands;
    Emit(level.last.sql, level.sql);
  }

  // "WITH (NOLOCK)", "(NOLOCK)" after a table, and OPTION (...).
  bool TakeHints() {
    if ((!SeesWord("WITH") && !SeesWord("OPTION")) || !SeesSymbol("(", 1)) return false;
    Advance();
    SkipParentheses();
    return true;
  }

  void SkipParentheses() {
    int depth = 0;
    do {
      if (SeesSymbol("(")) ++depth;
      if (SeesSymbol(")")) --depth;
      Advance();
    } while (depth > 0 && Peek().kind != SqlTokenKind::kEnd);
  }

  // SELECT, what ends its list, and what ends it.
  bool TakeClause(Level& level) {
    if (SeesWord("SELECT")) {
      level.select_start = level.sql.size();
      level.is_select_list = true;
      ++level.words;
      Emit("SELECT", level.sql);
      Advance();
      for (const char* word : {"ALL", "DISTINCT"})
        if (TakeWord(word)) Emit(word, level.sql);
      if (SeesWord("TOP")) TakeTop(level);
      return true;
    }
    if (SeesWord("FROM") || SeesWord("WHERE") || SeesWord("GROUP") || SeesWord("INTO"))
      level.is_select_list = false;
    const bool is_set_operator = SeesWord("UNION") || SeesWord("EXCEPT") || SeesWord("INTERSECT");
    if (is_set_operator) level.is_compound = true;
    if (is_set_operator || (level.is_compound && SeesWord("ORDER"))) EndSelect(level);
    return false;
  }

  void TakeTop(Level& level) {
    if (Peek(1).kind == SqlTokenKind::kNumber && !SeesWord("PERCENT", 2) && !SeesWord("WITH", 2)) {
      level.limit = Peek(1).text;
      Advance(2);
    } else if (SeesSymbol("(", 1)) {
      Advance(2);
      level.limit = "(" + Sequence(false).sql + ")";
      if (!TakeSymbol(")") || SeesWord("PERCENT") || SeesWord("WITH")) RaiseSyntaxError();
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
    const SqlTokenKind kind = Peek().kind;
    if (!is_item_start || !SeesSymbol("=", 1) ||
        (kind != SqlTokenKind::kName && kind != SqlTokenKind::kQuotedName &&
         kind != SqlTokenKind::kString))
      return false;
    const std::string name = SqlQuotedName(Peek().text);
    Advance(2);
    Emit(Additive().sql + " AS " + name, level.sql);
    ++level.words;
    return true;
  }

  void TakeKeyword(const std::string& upper, Level& level) {
    ++level.words;
    Advance();
    Emit(upper, level.sql);
    if (upper != "AS" || Peek().kind != SqlTokenKind::kString) return;
    Emit(SqlQuotedName(Peek().text), level.sql);
    Advance();
  }

  Operand Comparison() {
    Operand left = Additive();
    const bool is_negated = SeesWord("NOT");
    const std::size_t word = is_negated ? 1 : 0;
    if (IsComparison(Peek())) {
      const std::string symbol = Peek().text;
      Advance();
      for (const char* quantifier : {"ALL", "ANY", "SOME"})
        if (SeesWord(quantifier) && SeesSymbol("(", 1)) RaiseSyntaxError();
      Operand right = Additive();
      RequireOneValue(left);
      RequireOneValue(right);
      AlignLiteral(left, right);
      const std::string right_sql = Collated(right, left);
      return {left.sql + symbol + right_sql, OperandKind::kUnknown, {}, false, false};
    }
    if (SeesWord("BETWEEN", word)) {
      Advance(word + 1);
      Operand low = Additive();
      if (!TakeWord("AND")) RaiseSyntaxError();
      Operand high = Additive();
      AlignLiteral(left, low);
      AlignLiteral(left, high);
      return {left.sql + (is_negated ? " NOT" : "") + " BETWEEN " + Collated(low, left) + " AND " +
                  Collated(high, left),
              OperandKind::kUnknown,
              {},
              false,
              false};
    }
    if (SeesWord("IN", word) && SeesSymbol("(", word + 1) && !SeesWord("SELECT", word + 2)) {
      Advance(word + 2);
      return List(left, is_negated);
    }
    return left;
  }

  // The values after IN, which SQLite compares by the collation of the left side.
  Operand List(Operand left, bool is_negated) {
    std::string values;
    bool has_text = false;
    while (!SeesSymbol(")") && Peek().kind != SqlTokenKind::kEnd) {
      Operand value = Sequence(true);
      AlignLiteral(left, value);
      has_text = has_text || value.kind == OperandKind::kText;
      values += (values.empty() ? "" : ",") + value.sql;
      if (!TakeSymbol(",")) break;
    }
    if (!TakeSymbol(")")) RaiseSyntaxError();
    if (has_text && !left.has_collation) left.sql = "(" + left.sql + ") COLLATE " + kSqlCollation;
    return {left.sql + (is_negated ? " NOT" : "") + " IN (" + values + ")",
            OperandKind::kUnknown,
            {},
            false,
            false};
  }

  static bool IsDate(const Operand& operand) { return operand.kind == OperandKind::kDate; }

  // A literal in the form of what it is compared with: a date as the engine's dates are written,
  // 'True' as 1.
  static void AlignLiteral(Operand& left, Operand& right) {
    Operand& literal = left.literal ? left : right;
    const Operand& other = left.literal ? right : left;
    if (!literal.literal) return;
    if (IsDate(other)) {
      const std::optional<SqlMoment> date = ReadSqlDate(*literal.literal);
      if (date) literal.sql = SqlStringLiteral(WriteSqlMoment(*date));
    } else if (other.kind == OperandKind::kNumber) {
      const std::string upper = UpperAscii(*literal.literal);
      if (upper == "TRUE" || upper == "FALSE") literal.sql = upper == "TRUE" ? "1" : "0";
    }
  }

  static std::string Collated(const Operand& right, const Operand& left) {
    const auto needs_none = [](const Operand& operand) {
      return operand.has_collation || operand.kind == OperandKind::kNumber;
    };
    if (needs_none(left) || needs_none(right) ||
        (left.kind == OperandKind::kColumn && right.kind == OperandKind::kColumn))
      return right.sql;
    return "(" + right.sql + ") COLLATE " + kSqlCollation;
  }

  static void RequireOneValue(Operand& operand) {
    if (!operand.is_select) return;
    operand.sql = "(WITH ONLY_VALUE(V) AS " + operand.sql + " SELECT " + kSqlOnlyValue +
                  "(V) FROM ONLY_VALUE)";
    operand.is_select = false;
  }

  Operand Additive() {
    Operand left = Term();
    while (SeesSymbol("+") || SeesSymbol("-")) {
      const bool is_sum = SeesSymbol("+");
      Advance();
      const Operand right = Term();
      Operand result;
      if (left.kind == OperandKind::kNumber && right.kind == OperandKind::kNumber) {
        result.sql = left.sql + (is_sum ? "+" : "- ") + right.sql;
        result.kind = OperandKind::kNumber;
      } else {
        result.sql =
            std::string{is_sum ? kSqlAdd : kSqlSubtract} + "(" + left.sql + "," + right.sql + ")";
        if (IsDate(left) != IsDate(right))
          result.kind = OperandKind::kDate;
        else if (left.kind == OperandKind::kText || right.kind == OperandKind::kText)
          result.kind = OperandKind::kText;
      }
      left = std::move(result);
    }
    return left;
  }

  Operand Term() {
    Operand left = Unary();
    while (SeesSymbol("*") || SeesSymbol("/") || SeesSymbol("%")) {
      left.sql += Peek().text;
      Advance();
      left = {left.sql + Unary().sql, OperandKind::kNumber, {}, false, false};
    }
    return left;
  }

  Operand Unary() {
    std::string signs;
    while (SeesSymbol("-") || SeesSymbol("+") || SeesSymbol("~")) {
      if (!SeesSymbol("+")) signs += " " + Peek().text;
      Advance();
    }
    Operand operand = Primary();
    if (signs.empty()) return operand;
    return {signs + operand.sql, OperandKind::kNumber, {}, false, false};
  }

  Operand Primary() {
    Operand operand = PrimaryWithoutCollation();
    if (!TakeWord("COLLATE")) return operand;
    if (Peek().kind != SqlTokenKind::kName && Peek().kind != SqlTokenKind::kQuotedName)
      RaiseSyntaxError();
    operand.sql += " COLLATE " + SqlQuotedName(Peek().text);
    operand.has_collation = true;
    Advance();
    return operand;
  }

  Operand PrimaryWithoutCollation() {
    const SqlToken& token = Peek();
    if (token.kind == SqlTokenKind::kString) {
      Advance();
      return {SqlStringLiteral(token.text), OperandKind::kText, token.text, false, false};
    }
    if (token.kind == SqlTokenKind::kNumber) {
      Advance();
      return {token.text, OperandKind::kNumber, {}, false, false};
    }
    if (SeesSymbol("(")) return Parenthesized();
    if (SeesWord("CASE")) return Case();
    if (SeesWord("NULL")) {
      Advance();
      return {"NULL", OperandKind::kUnknown, {}, false, false};
    }
    const bool is_name = token.kind == SqlTokenKind::kQuotedName ||
                         (token.kind == SqlTokenKind::kName &&
                          (!IsKeyword(UpperAscii(token.text)) || SeesSymbol("(", 1)));
    if (is_name) return Name();
    RaiseSyntaxError();
  }

  Operand Parenthesized() {
    Advance();
    const bool is_select = SeesWord("SELECT");
    const int outer_case_depth = std::exchange(case_depth_, 0);
    Operand inner = Sequence(false);
    inner.sql = "(" + inner.sql;
    case_depth_ = outer_case_depth;
    if (!TakeSymbol(")")) RaiseSyntaxError();
    inner.sql += ")";
    inner.is_select = is_select;
    if (is_select) inner.kind = OperandKind::kUnknown;
    return inner;
  }

  Operand Case() {
    Advance();
    ++case_depth_;
    std::string sql = "CASE";
    while (!SeesWord("END")) {
      if (Peek().kind == SqlTokenKind::kEnd) RaiseSyntaxError();
      const bool is_when = SeesWord("WHEN");
      if (SeesCaseWord()) {
        Emit(UpperAscii(Peek().text), sql);
        Advance();
      }
      const std::size_t start = at_;
      const Operand part = Sequence(false);
      if (at_ == start) RaiseSyntaxError();
      const bool is_text = is_when && part.literal;
      Emit(is_text ? part.sql + " COLLATE " + kSqlCollation : part.sql, sql);
    }
    Advance();
    --case_depth_;
    return {sql + " END", OperandKind::kUnknown, {}, false, false};
  }

  // A column, a table or a function, with what stands before it: [Agency].dbo.Clients.Email.
  Operand Name() {
    std::vector<SqlToken> parts;
    do {
      if (SeesSymbol(".")) {
        parts.push_back({SqlTokenKind::kName, ""});
      } else {
        if (Peek().kind != SqlTokenKind::kName && Peek().kind != SqlTokenKind::kQuotedName &&
            !SeesSymbol("*"))
          RaiseSyntaxError();
        parts.push_back(Peek());
        Advance();
      }
    } while (TakeSymbol("."));
    const auto is_part = [&parts](std::string_view upper) {
      return parts.size() > 1 && UpperAscii(parts[0].text) == upper;
    };
    if (parts.size() > 2 && is_part(UpperAscii(schema_.database))) parts.erase(parts.begin());
    if (is_part("DBO") || is_part("")) parts.erase(parts.begin());
    if (SeesSymbol("(")) {
      if (Peek(1).kind == SqlTokenKind::kName && IsTableHint(UpperAscii(Peek(1).text)))
        SkipParentheses();
      else if (parts.size() == 1)
        return Function(parts[0]);
    }
    Operand operand{"", OperandKind::kColumn, {}, false, false};
    for (const SqlToken& part : parts) {
      if (!operand.sql.empty()) operand.sql += '.';
      operand.sql += part.kind == SqlTokenKind::kQuotedName ? SqlQuotedName(part.text) : part.text;
    }
    const std::string column = UpperAscii(parts.back().text);
    if (column == "CURRENT_TIMESTAMP" && parts.size() == 1)
      return {"GETDATE()", OperandKind::kDate, {}, false, false};
    const auto type = schema_.column_types.find(column);
    if (type == schema_.column_types.end()) return operand;
    if (type->second == ColumnType::kDateTime) operand.kind = OperandKind::kDate;
    if (type->second != ColumnType::kDateTime && type->second != ColumnType::kText)
      operand.kind = OperandKind::kNumber;
    return operand;
  }

  Operand Function(const SqlToken& name) {
    Advance();
    const std::string upper = UpperAscii(name.text);
    const int outer_case_depth = std::exchange(case_depth_, 0);
    Operand result = name.kind == SqlTokenKind::kQuotedName ? Call(SqlQuotedName(name.text), upper)
                     : upper == "CONVERT"                   ? Convert()
                     : upper == "CAST"                      ? Cast()
                                       : Call(NameForSqlite(upper, name.text), upper);
    case_depth_ = outer_case_depth;
    return result;
  }

  // LEFT, RIGHT and ISNULL are keywords to SQLite.
  static std::string NameForSqlite(const std::string& upper, const std::string& name) {
    if (IsOneOf(upper, {"LEFT", "RIGHT", "ISNULL"})) return SqlQuotedName(upper);
    return upper == "SYSDATETIME" ? "GETDATE" : name;
  }

  Operand Call(std::string function, const std::string& upper) {
    Operand result{std::move(function), KindOfFunction(upper), {}, false, false};
    result.sql += '(';
    if (upper == "SYSDATETIME") result.kind = OperandKind::kDate;
    if (IsOneOf(upper, {"DATEDIFF", "DATEADD", "DATEPART"}) && Peek().kind == SqlTokenKind::kName) {
      result.sql += SqlStringLiteral(Peek().text);
      Advance();
      if (!SeesSymbol(",")) RaiseSyntaxError();
    }
    const bool takes_kind = IsOneOf(upper, {"ISNULL", "COALESCE", "NULLIF", "MIN", "MAX"});
    while (!SeesSymbol(")") && Peek().kind != SqlTokenKind::kEnd && !SeesSymbol(";")) {
      if (TakeSymbol(",")) {
        result.sql += ',';
        continue;
      }
      const Operand argument = Sequence(true);
      if (takes_kind && (result.kind == OperandKind::kUnknown || IsDate(argument)) &&
          argument.kind != OperandKind::kColumn)
        result.kind = argument.kind;
      result.sql += argument.sql;
    }
    if (!TakeSymbol(")")) RaiseSyntaxError();
    result.sql += ')';
    return result;
  }

  // "name", "name(length)" or "name(precision, scale)", as the arguments of CONVERT.
  std::string Type(OperandKind& kind) {
    const std::string name = UpperAscii(Peek().text);
    if (Peek().kind != SqlTokenKind::kName && Peek().kind != SqlTokenKind::kQuotedName)
      RaiseSyntaxError();
    Advance();
    std::array<std::string, 2> sizes = {"NULL", "NULL"};
    if (TakeSymbol("(")) {
      for (std::string& size : sizes) {
        if (Peek().kind != SqlTokenKind::kNumber && !SeesWord("MAX")) RaiseSyntaxError();
        size = SeesWord("MAX") ? "-1" : Peek().text;
        Advance();
        if (!TakeSymbol(",")) break;
      }
      if (!TakeSymbol(")")) RaiseSyntaxError();
    }
    kind = IsDateType(name)                         ? OperandKind::kDate
           : name.find("CHAR") != std::string::npos ? OperandKind::kText
                                                    : OperandKind::kNumber;
    return SqlStringLiteral(name) + "," + sizes[0] + "," + sizes[1];
  }

  static Operand Converted(const std::string& type, OperandKind kind, const Operand& value,
                           std::string style) {
    // Without a style a date becomes text in style 0.
    if (style.empty()) style = kind == OperandKind::kText && IsDate(value) ? "0" : "NULL";
    return {"CONVERT(" + type + "," + value.sql + "," + style + ")", kind, {}, false, false};
  }

  Operand Convert() {
    OperandKind kind{};
    const std::string type = Type(kind);
    if (!TakeSymbol(",")) RaiseSyntaxError();
    const Operand value = Sequence(true);
    const std::string style = TakeSymbol(",") ? Sequence(true).sql : "";
    if (!TakeSymbol(")")) RaiseSyntaxError();
    return Converted(type, kind, value, style);
  }

  Operand Cast() {
    const Operand value = Additive();
    if (!TakeWord("AS")) RaiseSyntaxError();
    OperandKind kind{};
    const std::string type = Type(kind);
    if (!TakeSymbol(")")) RaiseSyntaxError();
    return Converted(type, kind, value, "");
  }

  std::vector<SqlToken> tokens_;
  const SqlSchema& schema_;
  std::size_t at_ = 0;
  int depth_ = 0;
  int case_depth_ = 0;
};

}  // namespace

TranslatedSql TranslateSql(std::string_view sql, const SqlSchema& schema) {
  std::string unclosed;
  std::vector<SqlToken> tokens = ReadSqlTokens(sql, unclosed);
  if (!unclosed.empty())
    throw SqlSyntaxError{"Unclosed quotation mark after the character string '" +
                         tokens[tokens.size() - 2].text + "'."};
  return Translator{std::move(tokens), schema}.Translate();
}

}  // namespace pxscheduler
