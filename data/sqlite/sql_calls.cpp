#include <array>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "data/sqlite/sql_functions.h"
#include "data/sqlite/sql_operand.h"
#include "data/sqlite/sql_translation.h"
#include "data/sqlite/sql_words.h"

namespace pxscheduler {
namespace {

// LEFT, RIGHT and ISNULL are keywords of SQLite.
std::string NameForSqlite(const std::string& upper, const std::string& name) {
  if (IsOneOf(upper, {"LEFT", "RIGHT", "ISNULL"})) return SqlQuotedName(upper);
  return upper == "SYSDATETIME" ? "GETDATE" : name;
}

// The kind of a function that gives one of its arguments: a date where one of them is.
SqlKind ShareKind(std::vector<SqlOperand>& arguments) {
  SqlKind kind = SqlKind::kUnknown;
  for (SqlOperand& argument : arguments) {
    for (SqlOperand& other : arguments) AlignLiteral(argument, other);
    const bool is_known = argument.kind != SqlKind::kColumn;
    if (is_known && (kind == SqlKind::kUnknown || argument.kind == SqlKind::kDate))
      kind = argument.kind;
  }
  return kind;
}

SqlOperand Converted(const std::string& type, SqlKind kind, const SqlOperand& value,
                     std::string style) {
  // Without a style a date becomes text in style 0.
  if (style.empty()) style = kind == SqlKind::kText && value.kind == SqlKind::kDate ? "0" : "NULL";
  return {"CONVERT(" + type + "," + value.sql + "," + style + ")", kind, {}, false, false};
}

}  // namespace

SqlOperand SqlTranslation::Function(const SqlToken& name) {
  cursor_.Advance();
  const std::string upper = UpperAscii(name.text);
  const int outer_case_depth = std::exchange(case_depth_, 0);
  SqlOperand result = name.kind == SqlTokenKind::kQuotedName ? Call(SqlQuotedName(name.text), upper)
                      : upper == "CONVERT"                   ? Convert()
                      : upper == "CAST"                      ? Cast()
                                        : Call(NameForSqlite(upper, name.text), upper);
  case_depth_ = outer_case_depth;
  return result;
}

// What stands between commas, up to the parenthesis that closes it.
std::vector<SqlOperand> SqlTranslation::Arguments() {
  std::vector<SqlOperand> arguments;
  if (cursor_.TakeSymbol(")")) return arguments;
  do {
    arguments.push_back(Sequence(true));
  } while (cursor_.TakeSymbol(","));
  cursor_.RequireSymbol(")");
  return arguments;
}

SqlOperand SqlTranslation::Call(const std::string& function, const std::string& upper) {
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

// "name", "name(length)" or "name(precision, scale)", as the arguments of CONVERT.
std::string SqlTranslation::Type(SqlKind& kind) {
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

SqlOperand SqlTranslation::Convert() {
  SqlKind kind{};
  const std::string type = Type(kind);
  cursor_.RequireSymbol(",");
  const SqlOperand value = Sequence(true);
  const std::string style = cursor_.TakeSymbol(",") ? Sequence(true).sql : "";
  cursor_.RequireSymbol(")");
  return Converted(type, kind, value, style);
}

SqlOperand SqlTranslation::Cast() {
  const Nesting nesting{depth_};
  const SqlOperand value = Additive();
  cursor_.RequireWord("AS");
  SqlKind kind{};
  const std::string type = Type(kind);
  cursor_.RequireSymbol(")");
  return Converted(type, kind, value, "");
}

}  // namespace pxscheduler
