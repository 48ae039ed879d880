#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "data/sqlite/sql_cursor.h"
#include "data/sqlite/sql_dates.h"
#include "data/sqlite/sql_schema.h"
#include "data/sqlite/sql_tree.h"
#include "data/sqlite/sql_writer.h"
#include "data/sqlite/written_expression.h"

namespace pxscheduler {

// What the names in a SELECT mean.
struct SqlScope {
  struct Source {
    std::string alias;
    std::vector<SqlColumn> columns;
  };

  const SqlScope* outer = nullptr;  // of the SELECT around it
  std::vector<Source> sources;
  std::set<std::string> groups;  // the expressions that it groups by, in SQLite's SQL
};

// Writes one statement. Everything raises SqlSyntaxError for what cannot be written.
class StatementWriter {
 public:
  StatementWriter(const SqlSchema& schema, const SqlCursor& cursor, SqlMoment now)
      : schema_(schema), cursor_(cursor), now_(now) {}

  // statement_writer_queries.cpp
  WrittenSql Query(const SqlQuery& query, const SqlScope* outer);

 private:
  // The tables that WITH names, by their names in upper case.
  using CommonTables = std::map<std::string, std::vector<SqlColumn>>;

  struct Item {
    WrittenExpression value;
    std::string name;
  };
  // A SELECT without its order.
  struct Select {
    SqlScope scope;
    std::vector<Item> items;
    std::string before_items;  // "SELECT DISTINCT "
    std::string from;          // with all that follows it
    std::string limit;
    bool is_distinct = false;
    bool is_grouped = false;
  };

  std::string CommonTablesOf(const SqlQuery& query, const SqlScope* outer);
  WrittenSql PlainQuery(const SqlQuery& query, const SqlScope* outer);
  WrittenSql CompoundQuery(const SqlQuery& query, const SqlScope* outer);
  Select WriteSelect(const SqlSelect& select, const SqlScope* outer);
  void WriteItems(const SqlSelect& select, Select& written);
  void AddStar(const SqlNode& star, Select& written) const;
  void WriteGroups(const SqlSelect& select, Select& written);
  void RequireGrouped(const Select& select, const WrittenExpression& value,
                      const char* where) const;
  std::string Source(const SqlSource& source, SqlScope& scope);
  std::string Table(const SqlSource& source, SqlScope& scope);
  std::string OrderOf(const SqlQuery& query, Select& select);
  const WrittenExpression* ItemNamed(const SqlNode& node, const std::vector<Item>& items) const;

  // statement_writer_expressions.cpp
  // A value; a condition is an error, and the other way round.
  WrittenExpression Scalar(const SqlNode& node, const SqlScope& scope);
  WrittenExpression Condition(const SqlNode& node, const SqlScope& scope);
  WrittenExpression Expression(const SqlNode& node, const SqlScope& scope);
  WrittenExpression Number(const SqlNode& node) const;
  WrittenExpression Column(const SqlNode& node, const SqlScope& scope) const;
  WrittenExpression Operation(const SqlNode& node, const SqlScope& scope);
  WrittenExpression Operated(const SqlNode& node, const std::string& operation,
                             const WrittenExpression& left, const WrittenExpression& right) const;
  WrittenExpression Quantified(const SqlNode& node, const SqlScope& scope);
  WrittenExpression InList(const SqlNode& node, const SqlScope& scope);
  WrittenExpression InQuery(const SqlNode& node, const SqlScope& scope);
  WrittenExpression Like(const SqlNode& node, const SqlScope& scope);
  WrittenExpression Case(const SqlNode& node, const SqlScope& scope);
  WrittenExpression Cast(const SqlNode& node, const SqlScope& scope);
  WrittenExpression Subquery(const SqlNode& node, const SqlScope& scope);
  WrittenExpression Window(const SqlNode& node, const SqlScope& scope);
  // Its one column, named "px_value".
  WrittenSql OneColumn(const SqlNode& node, const SqlScope& scope);

  // statement_writer_functions.cpp
  WrittenExpression Call(const SqlNode& node, const SqlScope& scope);
  WrittenExpression Aggregate(const SqlNode& node, const SqlScope& scope);
  WrittenExpression DateFunction(const SqlNode& node, const SqlScope& scope);
  WrittenExpression OdbcLiteral(const SqlNode& node) const;
  WrittenExpression Choice(const SqlNode& node, const SqlScope& scope);
  void RequireArguments(const SqlNode& node, std::size_t least, std::size_t most) const;
  DatePart PartNamed(const SqlNode& node, std::string_view function) const;

  // SQL Server's text and number, and where it is.
  [[noreturn]] void Raise(const std::string& text, int number, const SqlNode& node) const;
  [[noreturn]] void RaiseUnknownTable(const SqlSource& source) const;

  const SqlSchema& schema_;
  const SqlCursor& cursor_;
  SqlMoment now_;
  CommonTables common_tables_;
};

// Two without regard to the case of ASCII letters, as names compare.
bool IsSameName(std::string_view left, std::string_view right);

}  // namespace pxscheduler
