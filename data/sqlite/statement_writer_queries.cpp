#include <algorithm>
#include <utility>

#include "data/sqlite/statement_writer.h"
#include "text/ascii_case.h"

namespace pxscheduler {
namespace {

std::string JoinedNames(const std::vector<std::string>& names) {
  std::string joined;
  for (const std::string& name : names) joined += (joined.empty() ? "" : ".") + name;
  return joined;
}

void Rename(std::vector<SqlColumn>& columns, const std::vector<std::string>& names) {
  for (std::size_t i = 0; i < names.size(); ++i) columns[i].name = names[i];
}

}  // namespace

bool IsSameName(std::string_view left, std::string_view right) {
  return LowerAscii(left) == LowerAscii(right);
}

void StatementWriter::Raise(const std::string& text, int number, const SqlNode& node) const {
  throw SqlSyntaxError{text + cursor_.PlaceOf(node.place) + " (SQL Server error " +
                       std::to_string(number) + ")"};
}

void StatementWriter::RaiseUnknownTable(const SqlSource& source) const {
  SqlNode at;
  at.place = source.place;
  Raise("Invalid object name '" + JoinedNames(source.names) + "'.", 208, at);
}

WrittenSql StatementWriter::Query(const SqlQuery& query, const SqlScope* outer) {
  const CommonTables before = common_tables_;
  const std::string common = CommonTablesOf(query, outer);
  WrittenSql written =
      query.members.size() == 1 ? PlainQuery(query, outer) : CompoundQuery(query, outer);
  written.sql.insert(0, common);
  common_tables_ = before;
  return written;
}

std::string StatementWriter::CommonTablesOf(const SqlQuery& query, const SqlScope* outer) {
  std::string sql;
  for (const SqlCommonTable& table : query.common_tables) {
    WrittenSql written = Query(*table.query, outer);
    if (!table.column_aliases.empty() && table.column_aliases.size() != written.columns.size())
      throw SqlSyntaxError{"'" + table.name +
                           "' has fewer or more columns than were specified in the column list."};
    Rename(written.columns, table.column_aliases);
    sql += (sql.empty() ? "WITH " : ",") + SqlQuotedName(table.name);
    char separator = '(';
    for (const SqlColumn& column : written.columns)
      sql += std::exchange(separator, ',') + SqlQuotedName(column.name);
    sql += ") AS (" + written.sql + ")";
    common_tables_[UpperAscii(table.name)] = std::move(written.columns);
  }
  return sql.empty() ? sql : sql + " ";
}

WrittenSql StatementWriter::PlainQuery(const SqlQuery& query, const SqlScope* outer) {
  Select select = WriteSelect(query.members.front(), outer);
  WrittenSql written{select.before_items, {}};
  for (const Item& item : select.items) {
    written.sql += (written.columns.empty() ? "" : ",") +
                   (select.is_distinct ? AsKey(item.value) : AsColumn(item.value)) + " AS " +
                   SqlQuotedName(item.name);
    written.columns.push_back({item.name, item.value.kind});
  }
  written.sql += select.from + OrderOf(query, select) + select.limit;
  return written;
}

// All members get columns of one name and one kind; names and order stand around them.
WrittenSql StatementWriter::CompoundQuery(const SqlQuery& query, const SqlScope* outer) {
  std::vector<Select> members;
  for (const SqlSelect& member : query.members) members.push_back(WriteSelect(member, outer));
  if (std::ranges::count(query.operators, "INTERSECT") > 0 && query.operators.size() > 1)
    throw SqlSyntaxError{"The embedded database engine cannot mix INTERSECT with other operators."};

  Select whole;
  for (std::size_t i = 0; i < members.front().items.size(); ++i) {
    Item& item = whole.items.emplace_back();
    item.name = members.front().items[i].name;
    item.value.sql = SqlQuotedName("px" + std::to_string(i));
    item.value.kind = SqlKind::kNull;
    for (const Select& member : members) {
      if (member.items.size() != members.front().items.size())
        throw SqlSyntaxError{
            "All queries combined using a UNION, INTERSECT or EXCEPT operator must have an equal "
            "number of expressions in their target lists. (SQL Server error 205)"};
      item.value.kind = CommonKind(item.value.kind, member.items[i].value.kind);
    }
  }

  std::string sql;
  for (std::size_t at = 0; at < members.size(); ++at) {
    const Select& member = members[at];
    if (at > 0) sql += " " + query.operators[at - 1] + " ";
    sql += "SELECT * FROM (" + member.before_items;
    for (std::size_t i = 0; i < member.items.size(); ++i) {
      const WrittenExpression value =
          member.items[i].value.kind == whole.items[i].value.kind
              ? member.items[i].value
              : ConvertedTo(member.items[i].value, whole.items[i].value.kind);
      sql += (i > 0 ? "," : "") + AsKey(value) + " AS " + whole.items[i].value.sql;
    }
    sql += member.from + member.limit + ")";
  }
  WrittenSql written{"SELECT ", {}};
  for (Item& item : whole.items) {
    item.value.is_stored = IsDateKind(item.value.kind);
    written.sql +=
        (written.columns.empty() ? "" : ",") + item.value.sql + " AS " + SqlQuotedName(item.name);
    written.columns.push_back({item.name, item.value.kind});
  }
  written.sql += " FROM (" + sql + ")" + OrderOf(query, whole);
  return written;
}

StatementWriter::Select StatementWriter::WriteSelect(const SqlSelect& select,
                                                     const SqlScope* outer) {
  Select written;
  written.scope.outer = outer;
  written.is_distinct = select.is_distinct;
  written.before_items = select.is_distinct ? "SELECT DISTINCT " : "SELECT ";
  for (const SqlSource& source : select.sources)
    written.from += (written.from.empty() ? " FROM " : ",") + Source(source, written.scope);
  if (!select.where.empty()) {
    const WrittenExpression where = Condition(select.where.front(), written.scope);
    if (where.is_aggregate)
      Raise("An aggregate may not appear in the WHERE clause.", 147, select.where.front());
    written.from += " WHERE " + where.sql;
  }
  WriteGroups(select, written);
  WriteItems(select, written);
  for (const Item& item : written.items)
    written.is_grouped = written.is_grouped || item.value.is_aggregate;
  for (const Item& item : written.items) RequireGrouped(written, item.value, "the select list");
  if (!select.top.empty()) {
    const WrittenExpression top =
        ConvertedTo(Scalar(select.top.front(), written.scope), SqlKind::kBigInt);
    if (!top.is_constant) Raise("TOP takes no columns.", 4115, select.top.front());
    written.limit = " LIMIT " + top.sql;
  }
  return written;
}

void StatementWriter::WriteGroups(const SqlSelect& select, Select& written) {
  std::string groups;
  for (const SqlNode& node : select.groups) {
    const WrittenExpression group = Scalar(node, written.scope);
    if (group.is_constant)
      Raise(
          "Each GROUP BY expression must contain at least one column that is not an outer "
          "reference.",
          164, node);
    groups += (groups.empty() ? " GROUP BY " : ",") + AsKey(group);
    written.scope.groups.insert(group.sql);
  }
  written.from += groups;
  written.is_grouped = !groups.empty() || !select.having.empty();
  if (select.having.empty()) return;
  const WrittenExpression having = Condition(select.having.front(), written.scope);
  RequireGrouped(written, having, "the HAVING clause");
  // SQLite has no HAVING without GROUP BY before version 3.39.
  written.from += (groups.empty() ? " GROUP BY ''" : "") + std::string{" HAVING "} + having.sql;
}

void StatementWriter::RequireGrouped(const Select& select, const WrittenExpression& value,
                                     const char* where) const {
  if (select.is_grouped && !value.loose_column.empty())
    throw SqlSyntaxError{
        "Column '" + value.loose_column + "' is invalid in " + where +
        " because it is not contained in either an aggregate function or the GROUP "
        "BY clause. (SQL Server error 8120)"};
}

void StatementWriter::WriteItems(const SqlSelect& select, Select& written) {
  for (const SqlSelectItem& item : select.items) {
    if (item.node.kind == SqlNodeKind::kStar) {
      AddStar(item.node, written);
      continue;
    }
    const bool is_column = item.alias.empty() && item.node.kind == SqlNodeKind::kColumn;
    written.items.push_back(
        {Scalar(item.node, written.scope), is_column ? item.node.names.back() : item.alias});
  }
}

void StatementWriter::AddStar(const SqlNode& star, Select& written) const {
  const std::size_t before = written.items.size();
  for (const SqlScope::Source& source : written.scope.sources) {
    if (!star.names.empty() && !IsSameName(source.alias, star.names.back())) continue;
    for (const SqlColumn& column : source.columns) {
      SqlNode node;
      node.place = star.place;
      node.names = {source.alias, column.name};
      written.items.push_back({Column(node, written.scope), column.name});
    }
  }
  if (written.items.size() == before)
    Raise(star.names.empty()
              ? "Must specify table to select from."
              : "The column prefix '" + star.names.back() +
                    "' does not match with a table name or alias name used in the query.",
          star.names.empty() ? 263 : 107, star);
}

std::string StatementWriter::Source(const SqlSource& source, SqlScope& scope) {
  if (!source.join.empty()) {
    const bool is_nested = !source.sides[1].join.empty();
    std::string sql = Source(source.sides[0], scope) + " " + source.join + " ";
    sql += is_nested ? "(" + Source(source.sides[1], scope) + ")" : Source(source.sides[1], scope);
    if (!source.condition.empty()) sql += " ON " + Condition(source.condition.front(), scope).sql;
    return sql;
  }
  std::string sql;
  if (source.query) {
    WrittenSql written = Query(*source.query, scope.outer);
    if (!source.column_aliases.empty() && source.column_aliases.size() != written.columns.size())
      throw SqlSyntaxError{"'" + source.alias +
                           "' has fewer or more columns than were specified in the column list."};
    // The names are given where the columns are written, behind the alias SQLite takes none.
    for (std::size_t i = 0; i < source.column_aliases.size(); ++i)
      sql += (i > 0 ? "," : "") + SqlQuotedName(written.columns[i].name) + " AS " +
             SqlQuotedName(source.column_aliases[i]);
    sql = sql.empty() ? "(" + written.sql + ")" : "(SELECT " + sql + " FROM (" + written.sql + "))";
    Rename(written.columns, source.column_aliases);
    scope.sources.push_back({source.alias, std::move(written.columns)});
  } else {
    sql = Table(source, scope);
  }
  const std::string& alias = scope.sources.back().alias;
  for (std::size_t i = 0; i + 1 < scope.sources.size(); ++i)
    if (IsSameName(scope.sources[i].alias, alias))
      throw SqlSyntaxError{
          "The objects or aliases \"" + alias +
          "\" in the FROM clause have the same exposed names. (SQL Server error 1011)"};
  return sql + " AS " + SqlQuotedName(alias);
}

std::string StatementWriter::Table(const SqlSource& source, SqlScope& scope) {
  const std::string& name = source.names.back();
  const std::string alias = source.alias.empty() ? name : source.alias;
  const auto common = common_tables_.find(UpperAscii(name));
  if (source.names.size() == 1 && common != common_tables_.end()) {
    scope.sources.push_back({alias, common->second});
    return SqlQuotedName(name);
  }
  const auto found = schema_.tables.find(UpperAscii(name));
  const bool is_here = source.names.size() < 3 ||
                       (source.names.size() == 3 && IsSameName(source.names[0], schema_.database));
  if (found == schema_.tables.end() || !is_here) RaiseUnknownTable(source);
  scope.sources.push_back({alias, found->second.columns});
  return "main." + SqlQuotedName(found->second.name);
}

std::string StatementWriter::OrderOf(const SqlQuery& query, Select& select) {
  std::string sql;
  for (const SqlOrder& order : query.order) {
    const WrittenExpression* item = ItemNamed(order.node, select.items);
    const WrittenExpression value = item != nullptr ? *item : Scalar(order.node, select.scope);
    if (item == nullptr && query.members.size() > 1)
      Raise(
          "ORDER BY items must appear in the select list if the statement contains a UNION, "
          "INTERSECT or EXCEPT operator.",
          104, order.node);
    RequireGrouped(select, value, "the ORDER BY clause");
    sql += (sql.empty() ? " ORDER BY " : ",") + AsKey(value) + (order.is_descending ? " DESC" : "");
  }
  return sql;
}

// The item that an ORDER BY means by its number or its name; null for any other expression.
const WrittenExpression* StatementWriter::ItemNamed(const SqlNode& node,
                                                    const std::vector<Item>& items) const {
  if (node.kind == SqlNodeKind::kNumber) {
    for (std::size_t i = 0; i < items.size(); ++i)
      if (std::to_string(i + 1) == node.text) return &items[i].value;
    Raise("The ORDER BY position number " + node.text +
              " is out of range of the number of items in the select list.",
          108, node);
  }
  if (node.kind != SqlNodeKind::kColumn || node.names.size() != 1) return nullptr;
  const auto found = std::ranges::find_if(
      items, [&node](const Item& item) { return IsSameName(item.name, node.names.front()); });
  return found == items.end() ? nullptr : &found->value;
}

WrittenSql WriteQuery(const SqlQuery& query, const SqlSchema& schema, const SqlCursor& cursor,
                      SqlMoment now) {
  return StatementWriter(schema, cursor, now).Query(query, nullptr);
}

}  // namespace pxscheduler
