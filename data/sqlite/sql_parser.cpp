#include "data/sqlite/sql_parser.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

namespace pxscheduler {
namespace {

constexpr int kDeepestNesting = 100;

bool IsOneOf(std::string_view word, std::initializer_list<std::string_view> words) {
  return std::ranges::find(words, word) != words.end();
}

// Words that never are the name of a column, a table or an alias.
bool IsReserved(std::string_view upper) {
  static constexpr auto kReserved = std::to_array<std::string_view>(
      {"ALL",     "AND",       "ANY",    "AS",   "ASC",      "BETWEEN", "BY",     "CASE",
       "COLLATE", "CROSS",     "DELETE", "DESC", "DISTINCT", "ELSE",    "END",    "ESCAPE",
       "EXCEPT",  "EXISTS",    "FROM",   "FULL", "GROUP",    "HAVING",  "IN",     "INNER",
       "INSERT",  "INTERSECT", "INTO",   "IS",   "JOIN",     "LEFT",    "LIKE",   "NOT",
       "NULL",    "ON",        "OPTION", "OR",   "ORDER",    "OUTER",   "OVER",   "RIGHT",
       "SELECT",  "SET",       "SOME",   "THEN", "TOP",      "UNION",   "UPDATE", "USING",
       "VALUES",  "WHEN",      "WHERE",  "WITH", "EXEC",     "DECLARE", "DROP",   "CREATE"});
  return std::ranges::find(kReserved, upper) != kReserved.end();
}

bool IsTableHint(std::string_view upper) {
  return IsOneOf(upper, {"NOLOCK", "READUNCOMMITTED", "READCOMMITTED", "READPAST", "HOLDLOCK",
                         "NOWAIT", "ROWLOCK", "PAGLOCK", "TABLOCK", "UPDLOCK", "SERIALIZABLE",
                         "REPEATABLEREAD", "READCOMMITTEDLOCK", "NOEXPAND"});
}

class Parser {
 public:
  explicit Parser(SqlCursor& cursor) : cursor_(cursor) {}

  SqlQuery ParseQuery() {
    const Level level(*this);
    SqlQuery query;
    if (cursor_.TakeWord("WITH")) {
      do {
        SqlCommonTable& table = query.common_tables.emplace_back();
        table.name = TakeName();
        if (cursor_.SeesSymbol("(")) table.column_aliases = ParseNames();
        cursor_.RequireWord("AS");
        table.query = ParseParenthesizedQuery();
      } while (cursor_.TakeSymbol(","));
    }
    ParseMembers(query);
    if (cursor_.TakeWord("ORDER")) {
      cursor_.RequireWord("BY");
      query.order = ParseOrder();
    }
    if (cursor_.TakeWord("OPTION")) {
      if (!cursor_.SeesSymbol("(")) cursor_.RaiseSyntaxError();
      cursor_.SkipParentheses();
    }
    return query;
  }

 private:
  // One level of nesting, as long as it lives.
  class Level {
   public:
    explicit Level(Parser& parser) : parser_(parser) {
      if (++parser_.depth_ > kDeepestNesting)
        throw SqlSyntaxError{"Some part of your SQL statement is nested too deeply."};
    }
    Level(const Level&) = delete;
    Level& operator=(const Level&) = delete;
    ~Level() { --parser_.depth_; }

   private:
    Parser& parser_;
  };

  // Queries and sources

  void ParseMembers(SqlQuery& query) {
    while (true) {
      // A member in parentheses is one that may have a TOP, or set operators, of its own.
      if (cursor_.SeesSymbol("(") && (cursor_.SeesWord("SELECT", 1) || cursor_.SeesSymbol("(", 1)))
        query.members.push_back(SelectFrom(ParseParenthesizedQuery()));
      else
        query.members.push_back(ParseSelect());
      std::string set_operator;
      if (cursor_.TakeWord("UNION"))
        set_operator = cursor_.TakeWord("ALL") ? "UNION ALL" : "UNION";
      else if (cursor_.TakeWord("EXCEPT"))
        set_operator = "EXCEPT";
      else if (cursor_.TakeWord("INTERSECT"))
        set_operator = "INTERSECT";
      else
        return;
      query.operators.push_back(set_operator);
    }
  }

  SqlSelect SelectFrom(std::shared_ptr<const SqlQuery> query) {
    SqlSelect select;
    select.items.push_back({Node(SqlNodeKind::kStar), ""});
    SqlSource& source = select.sources.emplace_back();
    source.place = cursor_.Peek().place;
    source.query = std::move(query);
    source.alias = "px_member";
    return select;
  }

  std::shared_ptr<const SqlQuery> ParseParenthesizedQuery() {
    cursor_.RequireSymbol("(");
    auto query = std::make_shared<SqlQuery>(ParseQuery());
    cursor_.RequireSymbol(")");
    return query;
  }

  SqlSelect ParseSelect() {
    SqlSelect select;
    cursor_.RequireWord("SELECT");
    if (cursor_.TakeWord("DISTINCT"))
      select.is_distinct = true;
    else
      cursor_.TakeWord("ALL");
    if (cursor_.TakeWord("TOP")) {
      // Without parentheses only a number, which no operator can follow.
      select.top.push_back(cursor_.SeesSymbol("(") || cursor_.Peek().kind == SqlTokenKind::kNumber
                               ? ParsePrimary()
                               : Fail());
      if (cursor_.SeesWord("PERCENT") || cursor_.SeesWord("WITH")) Fail();
    }
    ParseEach([&] { select.items.push_back(ParseItem()); });
    if (cursor_.TakeWord("FROM")) ParseEach([&] { select.sources.push_back(ParseSource()); });
    if (cursor_.TakeWord("WHERE")) select.where.push_back(ParseExpression());
    if (cursor_.TakeWord("GROUP")) {
      cursor_.RequireWord("BY");
      ParseEach([&] { select.groups.push_back(ParseExpression()); });
    }
    if (cursor_.TakeWord("HAVING")) select.having.push_back(ParseExpression());
    return select;
  }

  // The items of a list that "," separates, at least one.
  template <typename Parse>
  void ParseEach(const Parse& parse) {
    do parse();
    while (cursor_.TakeSymbol(","));
  }

  SqlSelectItem ParseItem() {
    if (cursor_.SeesSymbol("*")) {
      SqlNode star = Node(SqlNodeKind::kStar);
      cursor_.Advance();
      return {std::move(star), ""};
    }
    if (SeesName() && cursor_.SeesSymbol("=", 1)) {
      std::string alias = TakeName();
      cursor_.Advance();
      return {ParseExpression(), std::move(alias)};
    }
    SqlNode node = ParseExpression();
    return {std::move(node), ParseAlias(true)};
  }

  std::string ParseAlias(bool may_be_string) {
    const bool is_said = cursor_.TakeWord("AS");
    if (SeesName() || (may_be_string && cursor_.Peek().kind == SqlTokenKind::kString))
      return cursor_.Take().text;
    if (is_said) Fail();
    return "";
  }

  SqlSource ParseSource() {
    const Level level(*this);
    SqlSource left = ParsePlainSource();
    while (true) {
      std::string join;
      if (cursor_.TakeWord("CROSS")) {
        join = "CROSS JOIN";
      } else if (cursor_.TakeWord("INNER") || cursor_.SeesWord("JOIN")) {
        join = "JOIN";
      } else if (cursor_.SeesWord("LEFT") || cursor_.SeesWord("RIGHT") ||
                 cursor_.SeesWord("FULL")) {
        join = UpperAscii(cursor_.Take().text) + " JOIN";
        cursor_.TakeWord("OUTER");
      } else {
        return left;
      }
      SqlSource joined;
      joined.place = cursor_.Peek().place;
      cursor_.RequireWord("JOIN");
      joined.join = join;
      joined.sides.push_back(std::move(left));
      joined.sides.push_back(ParsePlainSource());
      if (join != "CROSS JOIN") {
        cursor_.RequireWord("ON");
        joined.condition.push_back(ParseExpression());
      }
      left = std::move(joined);
    }
  }

  SqlSource ParsePlainSource() {
    SqlSource source;
    source.place = cursor_.Peek().place;
    if (cursor_.SeesSymbol("(")) {
      if (!cursor_.SeesWord("SELECT", 1) && !cursor_.SeesWord("WITH", 1) &&
          !(cursor_.SeesSymbol("(", 1) && cursor_.SeesWord("SELECT", 2))) {
        cursor_.Advance();
        source = ParseSource();
        cursor_.RequireSymbol(")");
        return source;
      }
      source.query = ParseParenthesizedQuery();
    } else {
      source.names = ParseQualifiedName();
    }
    ParseTableHints();
    source.alias = ParseAlias(false);
    if (source.query && source.alias.empty()) Fail();
    if (source.query && cursor_.SeesSymbol("(")) source.column_aliases = ParseNames();
    ParseTableHints();
    return source;
  }

  void ParseTableHints() {
    const bool is_said = cursor_.SeesWord("WITH") && cursor_.SeesSymbol("(", 1);
    const std::size_t first = is_said ? 1 : 0;
    if (!cursor_.SeesSymbol("(", first) || !IsTableHint(UpperAscii(cursor_.Peek(first + 1).text)))
      return;
    cursor_.Advance(first);
    cursor_.SkipParentheses();
  }

  std::vector<SqlOrder> ParseOrder() {
    std::vector<SqlOrder> order;
    do {
      SqlNode node = ParseExpression();
      const bool is_descending = cursor_.TakeWord("DESC");
      if (!is_descending) cursor_.TakeWord("ASC");
      order.push_back({std::move(node), is_descending});
    } while (cursor_.TakeSymbol(","));
    return order;
  }

  // Names

  bool SeesName(std::size_t ahead = 0) const {
    const SqlToken& token = cursor_.Peek(ahead);
    return token.kind == SqlTokenKind::kQuotedName ||
           (token.kind == SqlTokenKind::kName && !IsReserved(UpperAscii(token.text)) &&
            !token.text.starts_with('@'));
  }

  std::string TakeName() {
    if (!SeesName()) Fail();
    return cursor_.Take().text;
  }

  std::vector<std::string> ParseNames() {
    std::vector<std::string> names;
    cursor_.RequireSymbol("(");
    ParseEach([&] { names.push_back(TakeName()); });
    cursor_.RequireSymbol(")");
    return names;
  }

  // "a.b.c"; an owner may be left out: "agency..Clients".
  std::vector<std::string> ParseQualifiedName() {
    std::vector<std::string> names{TakeName()};
    while (cursor_.SeesSymbol(".") && !cursor_.SeesSymbol("*", 1)) {
      cursor_.Advance();
      names.push_back(cursor_.SeesSymbol(".") ? "" : TakeName());
    }
    return names;
  }

  // Expressions, from the operators that bind least to those that bind most.

  SqlNode Node(SqlNodeKind kind) const {
    SqlNode node;
    node.kind = kind;
    node.place = cursor_.Peek().place;
    return node;
  }

  SqlNode Joined(SqlNode node, SqlNode left, SqlNode right) const {
    node.operands.push_back(std::move(left));
    node.operands.push_back(std::move(right));
    return node;
  }

  [[noreturn]] SqlNode Fail() const { cursor_.RaiseSyntaxError(); }

  SqlNode ParseExpression() {
    const Level level(*this);
    SqlNode left = ParseAnd();
    while (cursor_.SeesWord("OR")) {
      SqlNode node = Node(SqlNodeKind::kOr);
      cursor_.Advance();
      left = Joined(std::move(node), std::move(left), ParseAnd());
    }
    return left;
  }

  SqlNode ParseAnd() {
    SqlNode left = ParseNot();
    while (cursor_.SeesWord("AND")) {
      SqlNode node = Node(SqlNodeKind::kAnd);
      cursor_.Advance();
      left = Joined(std::move(node), std::move(left), ParseNot());
    }
    return left;
  }

  SqlNode ParseNot() {
    if (!cursor_.SeesWord("NOT")) return ParsePredicate();
    const Level level(*this);
    SqlNode node = Node(SqlNodeKind::kNot);
    cursor_.Advance();
    node.operands.push_back(ParseNot());
    return node;
  }

  SqlNode ParsePredicate() {
    if (cursor_.SeesWord("EXISTS")) {
      SqlNode node = Node(SqlNodeKind::kExists);
      cursor_.Advance();
      node.query = ParseParenthesizedQuery();
      return node;
    }
    SqlNode left = ParseSum();
    while (true) {
      SqlNode node = Node(SqlNodeKind::kComparison);
      const SqlToken& token = cursor_.Peek();
      if (token.kind == SqlTokenKind::kSymbol &&
          IsOneOf(token.text, {"=", "<", ">", "<=", ">=", "<>", "!="})) {
        left = ParseComparison(std::move(node), std::move(left));
      } else if (cursor_.TakeWord("IS")) {
        node.kind = SqlNodeKind::kIsNull;
        node.is_negated = cursor_.TakeWord("NOT");
        cursor_.RequireWord("NULL");
        node.operands.push_back(std::move(left));
        left = std::move(node);
      } else {
        node.is_negated = cursor_.SeesWord("NOT");
        const std::size_t word = node.is_negated ? 1 : 0;
        if (cursor_.SeesWord("LIKE", word))
          node.kind = SqlNodeKind::kLike;
        else if (cursor_.SeesWord("IN", word))
          node.kind = SqlNodeKind::kInList;
        else if (cursor_.SeesWord("BETWEEN", word))
          node.kind = SqlNodeKind::kBetween;
        else
          return left;
        cursor_.Advance(word + 1);
        left = ParseRestOfPredicate(std::move(node), std::move(left));
      }
    }
  }

  SqlNode ParseComparison(SqlNode node, SqlNode left) {
    node.text = cursor_.Take().text;
    if (node.text == "!=") node.text = "<>";
    node.operands.push_back(std::move(left));
    if (cursor_.SeesWord("ALL") || cursor_.SeesWord("ANY") || cursor_.SeesWord("SOME")) {
      node.kind = SqlNodeKind::kQuantified;
      node.is_negated = cursor_.TakeWord("ALL");
      if (!node.is_negated) cursor_.Advance();
      node.query = ParseParenthesizedQuery();
    } else {
      node.operands.push_back(ParseSum());
    }
    return node;
  }

  SqlNode ParseRestOfPredicate(SqlNode node, SqlNode left) {
    node.operands.push_back(std::move(left));
    if (node.kind == SqlNodeKind::kLike) {
      node.operands.push_back(ParseSum());
      if (cursor_.TakeWord("ESCAPE")) node.operands.push_back(ParseSum());
    } else if (node.kind == SqlNodeKind::kBetween) {
      node.operands.push_back(ParseSum());
      cursor_.RequireWord("AND");
      node.operands.push_back(ParseSum());
    } else if (cursor_.SeesSymbol("(") && cursor_.SeesWord("SELECT", 1)) {
      node.kind = SqlNodeKind::kInQuery;
      node.query = ParseParenthesizedQuery();
    } else {
      cursor_.RequireSymbol("(");
      ParseEach([&] { node.operands.push_back(ParseSum()); });
      cursor_.RequireSymbol(")");
    }
    return node;
  }

  SqlNode ParseSum() {
    SqlNode left = ParseProduct();
    while (SeesOperator({"+", "-", "&", "|", "^"})) {
      SqlNode node = Node(SqlNodeKind::kOperation);
      node.text = cursor_.Take().text;
      left = Joined(std::move(node), std::move(left), ParseProduct());
    }
    return left;
  }

  SqlNode ParseProduct() {
    SqlNode left = ParseUnary();
    while (SeesOperator({"*", "/", "%"})) {
      SqlNode node = Node(SqlNodeKind::kOperation);
      node.text = cursor_.Take().text;
      left = Joined(std::move(node), std::move(left), ParseUnary());
    }
    return left;
  }

  bool SeesOperator(std::initializer_list<std::string_view> symbols) const {
    return cursor_.Peek().kind == SqlTokenKind::kSymbol && IsOneOf(cursor_.Peek().text, symbols);
  }

  SqlNode ParseUnary() {
    const Level level(*this);
    if (cursor_.TakeSymbol("+")) return ParseUnary();
    if (cursor_.SeesSymbol("-")) {
      SqlNode node = Node(SqlNodeKind::kNegative);
      cursor_.Advance();
      node.operands.push_back(ParseUnary());
      return node;
    }
    SqlNode node = ParsePrimary();
    while (cursor_.SeesWord("COLLATE")) {
      SqlNode collated = Node(SqlNodeKind::kCollate);
      cursor_.Advance();
      collated.text = TakeName();
      collated.operands.push_back(std::move(node));
      node = std::move(collated);
    }
    return node;
  }

  SqlNode ParsePrimary() {
    SqlNode node = Node(SqlNodeKind::kNumber);
    const SqlToken& token = cursor_.Peek();
    switch (token.kind) {
      case SqlTokenKind::kNumber:
        node.text = cursor_.Take().text;
        return node;
      case SqlTokenKind::kString:
        node.kind = SqlNodeKind::kString;
        node.text = cursor_.Take().text;
        return node;
      case SqlTokenKind::kSymbol:
        if (token.text == "{") return ParseEscape();
        return ParseParentheses();
      case SqlTokenKind::kName:
      case SqlTokenKind::kQuotedName:
        return ParseNamed();
      case SqlTokenKind::kEnd:
        break;
    }
    return Fail();
  }

  SqlNode ParseParentheses() {
    if (!cursor_.SeesSymbol("(")) Fail();
    if (cursor_.SeesWord("SELECT", 1)) {
      SqlNode node = Node(SqlNodeKind::kSubquery);
      node.query = ParseParenthesizedQuery();
      return node;
    }
    cursor_.Advance();
    SqlNode node = ParseExpression();
    cursor_.RequireSymbol(")");
    return node;
  }

  // ODBC's {d '2026-11-16'}, {t '15:07:41'}, {ts '2026-11-16 15:07:41'} and {fn NOW()}.
  SqlNode ParseEscape() {
    SqlNode node = Node(SqlNodeKind::kCall);
    cursor_.Advance();
    if (cursor_.TakeWord("FN")) {
      node = ParseNamed();
    } else {
      if (!cursor_.SeesWord("D") && !cursor_.SeesWord("T") && !cursor_.SeesWord("TS")) Fail();
      node.text = "{" + UpperAscii(cursor_.Take().text);
      if (cursor_.Peek().kind != SqlTokenKind::kString) Fail();
      node.operands.push_back(ParsePrimary());
    }
    cursor_.RequireSymbol("}");
    return node;
  }

  SqlNode ParseNamed() {
    const std::string upper = UpperAscii(cursor_.Peek().text);
    const bool is_word = cursor_.Peek().kind == SqlTokenKind::kName;
    if (is_word && upper == "NULL") {
      SqlNode node = Node(SqlNodeKind::kNull);
      cursor_.Advance();
      return node;
    }
    if (is_word && upper == "CASE") return ParseCase();
    if (is_word && upper == "CURRENT_TIMESTAMP") {
      SqlNode node = Node(SqlNodeKind::kCall);
      node.text = "GETDATE";
      cursor_.Advance();
      return node;
    }
    if (is_word && upper.starts_with('@'))
      throw SqlSyntaxError{"Must declare the scalar variable \"" + cursor_.Peek().text + "\"."};
    if (cursor_.SeesSymbol("(", 1) && is_word &&
        (SeesName() || upper == "LEFT" || upper == "RIGHT"))
      return upper == "CAST" || upper == "CONVERT" ? ParseConversion() : ParseCall();
    SqlNode node = Node(SqlNodeKind::kColumn);
    node.names = ParseQualifiedName();
    if (cursor_.SeesSymbol(".") && cursor_.SeesSymbol("*", 1)) {
      node.kind = SqlNodeKind::kStar;
      cursor_.Advance(2);
    }
    return node;
  }

  SqlNode ParseCase() {
    SqlNode node = Node(SqlNodeKind::kCase);
    cursor_.Advance();
    node.has_operand = !cursor_.SeesWord("WHEN");
    if (node.has_operand) node.operands.push_back(ParseExpression());
    do {
      cursor_.RequireWord("WHEN");
      node.operands.push_back(ParseExpression());
      cursor_.RequireWord("THEN");
      node.operands.push_back(ParseExpression());
    } while (cursor_.SeesWord("WHEN"));
    node.has_else = cursor_.TakeWord("ELSE");
    if (node.has_else) node.operands.push_back(ParseExpression());
    cursor_.RequireWord("END");
    return node;
  }

  SqlNode ParseConversion() {
    SqlNode node = Node(SqlNodeKind::kCast);
    const bool is_cast = cursor_.TakeWord("CAST");
    if (!is_cast) cursor_.Advance();
    cursor_.RequireSymbol("(");
    if (is_cast) {
      node.operands.push_back(ParseExpression());
      cursor_.RequireWord("AS");
      node.type = ParseType();
    } else {
      node.type = ParseType();
      cursor_.RequireSymbol(",");
      node.operands.push_back(ParseExpression());
      if (cursor_.TakeSymbol(",")) node.operands.push_back(ParseExpression());
    }
    cursor_.RequireSymbol(")");
    return node;
  }

  SqlType ParseType() {
    const std::optional<SqlType> known = SqlTypeNamed(cursor_.Peek().text);
    if (!known || !SeesName())
      throw SqlSyntaxError{"The embedded database engine has no type " + cursor_.Peek().text +
                           cursor_.Place() + "."};
    SqlType type = *known;
    cursor_.Advance();
    if (!cursor_.TakeSymbol("(")) return type;
    type.length = cursor_.TakeWord("MAX") ? SqlType::kMaximum : TakeWholeNumber();
    if (cursor_.TakeSymbol(",")) type.scale = TakeWholeNumber();
    cursor_.RequireSymbol(")");
    return type;
  }

  std::int64_t TakeWholeNumber() {
    const std::string& text = cursor_.Peek().text;
    std::int64_t number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (cursor_.Peek().kind != SqlTokenKind::kNumber || result.ec != std::errc{} ||
        result.ptr != text.data() + text.size() || number > 8000)
      Fail();
    cursor_.Advance();
    return number;
  }

  SqlNode ParseCall() {
    SqlNode node = Node(SqlNodeKind::kCall);
    node.text = UpperAscii(cursor_.Take().text);
    cursor_.RequireSymbol("(");
    if (cursor_.TakeSymbol("*")) {
      node.has_star = true;
    } else if (!cursor_.SeesSymbol(")")) {
      node.has_distinct = cursor_.TakeWord("DISTINCT");
      if (!node.has_distinct) cursor_.TakeWord("ALL");
      ParseEach([&] { node.operands.push_back(ParseExpression()); });
    }
    cursor_.RequireSymbol(")");
    if (cursor_.TakeWord("OVER")) ParseWindow(node);
    return node;
  }

  void ParseWindow(SqlNode& node) {
    if (!node.operands.empty() || node.has_star) Fail();
    node.kind = SqlNodeKind::kWindow;
    cursor_.RequireSymbol("(");
    if (cursor_.TakeWord("PARTITION")) {
      cursor_.RequireWord("BY");
      ParseEach([&] { node.operands.push_back(ParseExpression()); });
    }
    node.partition_count = node.operands.size();
    cursor_.RequireWord("ORDER");
    cursor_.RequireWord("BY");
    for (SqlOrder& order : ParseOrder()) {
      node.operands.push_back(std::move(order.node));
      node.descending.push_back(order.is_descending);
    }
    cursor_.RequireSymbol(")");
  }

  SqlCursor& cursor_;
  int depth_ = 0;
};

}  // namespace

SqlQuery ParseStatement(SqlCursor& cursor) {
  SqlQuery query = Parser(cursor).ParseQuery();
  if (!cursor.IsAtEnd() && !cursor.TakeSymbol(";")) cursor.RaiseSyntaxError();
  return query;
}

}  // namespace pxscheduler
