#include <algorithm>
#include <optional>
#include <utility>

#include "data/sqlite/sql_conversion.h"
#include "data/sqlite/sql_functions.h"
#include "data/sqlite/statement_writer.h"

namespace pxscheduler {
namespace {

// A function whose arguments have kinds of their own: "t" a text, "i" a whole number, "n" a number
// that keeps its kind, "f" a floating one, "d" a date; behind "|" stand those that may be left out,
// each with what then counts.
struct PlainFunction {
  std::string_view name;
  std::string_view written;
  std::string_view arguments;
  std::string_view defaults;  // separated by ","
  SqlKind kind;               // kNull: that of the first argument
};

constexpr PlainFunction kPlainFunctions[] = {
    {"LEFT", "px_left", "ti", "", SqlKind::kText},
    {"RIGHT", "px_right", "ti", "", SqlKind::kText},
    {"LEN", "px_len", "t", "", SqlKind::kInt},
    {"SUBSTRING", "px_substring", "tii", "", SqlKind::kText},
    {"CHARINDEX", "px_charindex", "tt|i", "1", SqlKind::kInt},
    {"PATINDEX", "px_patindex", "tt", "", SqlKind::kInt},
    {"REPLACE", "px_replace", "ttt", "", SqlKind::kText},
    {"STUFF", "px_stuff", "tiit", "", SqlKind::kText},
    {"REPLICATE", "px_replicate", "ti", "", SqlKind::kText},
    {"SPACE", "px_replicate(' ',", "i", "", SqlKind::kText},
    {"REVERSE", "px_reverse", "t", "", SqlKind::kText},
    {"LTRIM", "ltrim", "t", "", SqlKind::kText},
    {"RTRIM", "rtrim", "t", "", SqlKind::kText},
    {"TRIM", "trim", "t", "", SqlKind::kText},
    {"UPPER", "px_upper", "t", "", SqlKind::kText},
    {"LOWER", "px_lower", "t", "", SqlKind::kText},
    {"UCASE", "px_upper", "t", "", SqlKind::kText},
    {"LCASE", "px_lower", "t", "", SqlKind::kText},
    {"CHAR", "px_char", "i", "", SqlKind::kText},
    {"NCHAR", "px_char", "i", "", SqlKind::kText},
    {"ASCII", "px_ascii", "t", "", SqlKind::kInt},
    {"UNICODE", "px_ascii", "t", "", SqlKind::kInt},
    {"STR", "px_str", "f|ii", "10,0", SqlKind::kText},
    {"ISNUMERIC", "px_isnumeric", "t", "", SqlKind::kInt},
    {"ISDATE", "px_isdate", "t", "", SqlKind::kInt},
    {"ABS", "abs", "n", "", SqlKind::kNull},
    {"ROUND", "px_round", "ni|i", "0", SqlKind::kNull},
    {"FLOOR", "px_floor", "n", "", SqlKind::kNull},
    {"CEILING", "px_ceiling", "n", "", SqlKind::kNull},
    {"SIGN", "px_sign", "n", "", SqlKind::kNull},
    {"YEAR", "px_datepart(0,", "d", "", SqlKind::kInt},
    {"EOMONTH", "px_eomonth", "d|i", "0", SqlKind::kDate},
    {"DATEFROMPARTS", "px_datefromparts", "iii", "", SqlKind::kDate},
};

bool IsAggregate(std::string_view name) {
  static constexpr std::string_view kAggregates[] = {"COUNT", "COUNT_BIG", "SUM",
                                                     "AVG",   "MIN",       "MAX"};
  return std::ranges::find(kAggregates, name) != std::end(kAggregates);
}

// As a function takes a date: a number or a text becomes one.
WrittenExpression AsDate(const WrittenExpression& value) {
  if (IsDateKind(value.kind)) return ConvertedTo(value, value.kind);
  return ConvertedTo(value, IsNumberKind(value.kind) ? SqlKind::kDateTime : SqlKind::kDateTime2);
}

WrittenExpression AsArgument(char kind, const WrittenExpression& value) {
  switch (kind) {
    case 't':
      return ConvertedTo(value, SqlKind::kText);
    case 'i':
      return ConvertedTo(value, SqlKind::kInt);
    case 'd':
      return AsDate(value);
    case 'f':
      return ConvertedTo(value, SqlKind::kFloat);
    default:
      return IsNumberKind(value.kind) || value.kind == SqlKind::kNull
                 ? value
                 : ConvertedTo(value, SqlKind::kFloat);
  }
}

}  // namespace

void StatementWriter::RequireArguments(const SqlNode& node, std::size_t least,
                                       std::size_t most) const {
  if (node.operands.size() < least || node.operands.size() > most || node.has_star ||
      node.has_distinct)
    Raise("The function " + node.text + " takes " + std::to_string(least) +
              (least == most ? "" : " to " + std::to_string(most)) + " arguments.",
          174, node);
}

WrittenExpression StatementWriter::Call(const SqlNode& node, const SqlScope& scope) {
  if (IsAggregate(node.text)) return Aggregate(node, scope);
  if (node.text.starts_with('{')) return OdbcLiteral(node);
  const auto* const found = std::ranges::find(kPlainFunctions, node.text, &PlainFunction::name);
  if (found == std::end(kPlainFunctions)) return DateFunction(node, scope);
  const PlainFunction& function = *found;
  const std::size_t least = std::min(function.arguments.find('|'), function.arguments.size());
  std::string kinds{function.arguments};
  std::erase(kinds, '|');
  RequireArguments(node, least, kinds.size());
  const bool is_begun = function.written.find('(') != std::string_view::npos;
  std::string sql = std::string{function.written} + (is_begun ? "" : "(");
  WrittenExpression whole;
  whole.kind = function.kind;
  std::string_view defaults = function.defaults;
  for (std::size_t i = 0; i < kinds.size(); ++i) {
    if (i > 0) sql += ",";
    if (i < node.operands.size()) {
      const WrittenExpression value = AsArgument(kinds[i], Scalar(node.operands[i], scope));
      sql += value.sql;
      TakePart(whole, value);
      if (i == 0 && function.kind == SqlKind::kNull) whole.kind = value.kind;
    } else {
      sql += defaults.substr(0, defaults.find(','));
    }
    if (i >= least) defaults.remove_prefix(std::min(defaults.find(','), defaults.size() - 1) + 1);
  }
  whole.sql = sql + ")";
  return whole;
}

WrittenExpression StatementWriter::Aggregate(const SqlNode& node, const SqlScope& scope) {
  WrittenExpression value = MadeOf("*", SqlKind::kInt, {});
  if (!node.has_star) {
    if (node.operands.size() != 1)
      Raise("The " + node.text + " function requires 1 argument(s).", 174, node);
    value = Scalar(node.operands[0], scope);
    if (value.is_aggregate)
      Raise(
          "Cannot perform an aggregate function on an expression containing an aggregate or a "
          "subquery.",
          130, node);
  } else if (!node.text.starts_with("COUNT")) {
    Raise("Incorrect syntax near '*'.", 102, node);
  }
  const bool counts = node.text.starts_with("COUNT");
  const bool orders = node.text == "MIN" || node.text == "MAX";
  std::string argument = value.sql;
  if (IsDateKind(value.kind))
    argument = ConvertedTo(value, value.kind).sql;
  else if (!node.has_star && (orders || counts))
    argument = AsKey(value);
  if (!counts && !orders && !IsNumberKind(value.kind))
    Raise("Operand data type " + std::string{NameOf(value.kind)} + " is invalid for " +
              (node.text == "SUM" ? "sum" : "avg") + " operator.",
          8117, node);
  const std::string distinct = node.has_distinct ? "DISTINCT " : "";
  const std::string applied = "(" + distinct + argument + ")";
  WrittenExpression result;
  result.is_aggregate = true;
  result.is_constant = false;
  result.kind = value.kind;
  if (counts) {
    result.sql = "COUNT" + applied;
    result.kind = node.text == "COUNT" ? SqlKind::kInt : SqlKind::kBigInt;
  } else if (orders) {
    result.sql = node.text + applied;
  } else {
    const bool is_whole = value.kind <= SqlKind::kBigInt;
    result.kind = std::max(value.kind, SqlKind::kInt);
    // A sum of whole numbers has their type, and their mean is a whole number.
    const std::string sum =
        is_whole ? WrittenCall("px_operate", {"'+'", NumberOf(result.kind), "0", "SUM" + applied})
                 : "SUM" + applied;
    if (node.text == "SUM")
      result.sql = sum;
    else
      result.sql = is_whole ? "(" + sum + "/COUNT" + applied + ")" : "AVG" + applied;
  }
  return result;
}

DatePart StatementWriter::PartNamed(const SqlNode& node, std::string_view function) const {
  const std::string name =
      node.kind == SqlNodeKind::kColumn && node.names.size() == 1 ? node.names[0] : node.text;
  const std::optional<DatePart> part = DatePartNamed(name);
  if (!part)
    Raise("'" + name + "' is not a recognized " + std::string{function} + " option.", 155, node);
  return *part;
}

WrittenExpression StatementWriter::DateFunction(const SqlNode& node, const SqlScope& scope) {
  const auto moment = [&](SqlMoment value, SqlKind kind) {
    RequireArguments(node, 0, 0);
    return MadeOf(std::to_string(MillisecondsOf(value)), kind, {});
  };
  const auto number = [](DatePart part) { return std::to_string(static_cast<int>(part)); };
  if (node.text == "GETDATE" || node.text == "NOW")
    return moment(RoundedToDateTime(now_), SqlKind::kDateTime);
  if (node.text == "SYSDATETIME") return moment(now_, SqlKind::kDateTime2);
  if (node.text == "MONTH" || node.text == "DAY") {
    RequireArguments(node, 1, 1);
    const WrittenExpression date = AsDate(Scalar(node.operands[0], scope));
    const DatePart part = node.text == "DAY" ? DatePart::kDay : DatePart::kMonth;
    return MadeOf(WrittenCall("px_datepart", {number(part), date.sql}), SqlKind::kInt, {&date});
  }
  if (node.text == "DATEPART" || node.text == "DATENAME") {
    RequireArguments(node, 2, 2);
    const bool is_name = node.text == "DATENAME";
    const DatePart part = PartNamed(node.operands[0], is_name ? "datename" : "datepart");
    const WrittenExpression date = AsDate(Scalar(node.operands[1], scope));
    return MadeOf(WrittenCall(is_name ? "px_datename" : "px_datepart", {number(part), date.sql}),
                  is_name ? SqlKind::kText : SqlKind::kInt, {&date});
  }
  if (node.text == "DATEDIFF") {
    RequireArguments(node, 3, 3);
    const DatePart part = PartNamed(node.operands[0], "datediff");
    const WrittenExpression from = AsDate(Scalar(node.operands[1], scope));
    const WrittenExpression to = AsDate(Scalar(node.operands[2], scope));
    return MadeOf(WrittenCall("px_datediff", {number(part), from.sql, to.sql}), SqlKind::kInt,
                  {&from, &to});
  }
  if (node.text == "DATEADD") {
    RequireArguments(node, 3, 3);
    const DatePart part = PartNamed(node.operands[0], "dateadd");
    const WrittenExpression count = ConvertedTo(Scalar(node.operands[1], scope), SqlKind::kInt);
    const WrittenExpression given = Scalar(node.operands[2], scope);
    const WrittenExpression date =
        IsDateKind(given.kind) ? AsDate(given) : ConvertedTo(given, SqlKind::kDateTime);
    return MadeOf(
        WrittenCall("px_dateadd", {number(part), count.sql, date.sql, NumberOf(date.kind)}),
        date.kind, {&count, &date});
  }
  return Choice(node, scope);
}

// {d '2026-11-16'}, {t '15:07:41'} (of today) and {ts '2026-11-16 15:07:41'}.
WrittenExpression StatementWriter::OdbcLiteral(const SqlNode& node) const {
  const std::string& text = node.operands[0].text;
  const std::string today = node.text == "{T" ? WriteSqlDay(now_) + " " : "";
  return MadeOf(std::to_string(MillisecondsOf(DateOfText(today + text, SqlKind::kDateTime, 0))),
                SqlKind::kDateTime, {});
}

// Functions that give one of their arguments, and CONCAT and POWER.
WrittenExpression StatementWriter::Choice(const SqlNode& node, const SqlScope& scope) {
  std::vector<WrittenExpression> values;
  SqlKind kind = SqlKind::kNull;
  const bool is_iif = node.text == "IIF";
  for (std::size_t i = 0; i < node.operands.size(); ++i) {
    values.push_back(is_iif && i == 0 ? Condition(node.operands[i], scope)
                                      : Scalar(node.operands[i], scope));
    if (!is_iif || i > 0) kind = CommonKind(kind, values.back().kind);
  }
  WrittenExpression whole;
  for (const WrittenExpression& value : values) TakePart(whole, value);
  whole.kind = kind;
  whole.collation.clear();
  if (node.text == "ISNULL" || node.text == "IFNULL") {
    RequireArguments(node, 2, 2);
    whole.kind = values[0].kind == SqlKind::kNull ? values[1].kind : values[0].kind;
    whole.sql = WrittenCall(
        "ifnull", {ConvertedTo(values[0], whole.kind).sql, ConvertedTo(values[1], whole.kind).sql});
  } else if (node.text == "COALESCE") {
    RequireArguments(node, 2, 100);
    whole.sql = "coalesce";
    char separator = '(';
    for (const WrittenExpression& value : values)
      whole.sql += std::exchange(separator, ',') + ConvertedTo(value, kind).sql;
    whole.sql += ")";
  } else if (node.text == "NULLIF") {
    RequireArguments(node, 2, 2);
    whole.kind = values[0].kind;
    whole.sql = "(CASE WHEN " + Compared("=", values[0], values[1]).sql + " THEN NULL ELSE " +
                ConvertedTo(values[0], whole.kind).sql + " END)";
  } else if (is_iif) {
    RequireArguments(node, 3, 3);
    whole.sql = "(CASE WHEN " + values[0].sql + " THEN " + ConvertedTo(values[1], kind).sql +
                " ELSE " + ConvertedTo(values[2], kind).sql + " END)";
  } else if (node.text == "CONCAT") {
    RequireArguments(node, 2, 254);
    whole.kind = SqlKind::kText;
    for (const WrittenExpression& value : values)
      whole.sql += (whole.sql.empty() ? "(" : "||") +
                   WrittenCall("ifnull", {ConvertedTo(value, SqlKind::kText).sql, "''"});
    whole.sql += ")";
  } else if (node.text == "POWER") {
    RequireArguments(node, 2, 2);
    const WrittenExpression base = AsArgument('n', values[0]);
    whole.kind = std::max(base.kind, SqlKind::kInt);
    whole.sql = WrittenCall(
        "px_power", {base.sql, ConvertedTo(values[1], SqlKind::kFloat).sql, NumberOf(whole.kind)});
  } else {
    Raise("'" + node.text + "' is not a recognized built-in function name.", 195, node);
  }
  return whole;
}

}  // namespace pxscheduler
