#include "data/sqlite/sql_schema.h"

#include <algorithm>
#include <memory>
#include <set>
#include <utility>

#include "data/rows/session.h"
#include "data/sqlite/database_file.h"
#include "data/sqlite/sql_token.h"

namespace pxscheduler {
namespace {

using Rows = std::vector<std::vector<std::string>>;

// The rows of a statement, each as the texts of its columns.
Rows RowsOf(sqlite3* database, const std::string& sql) {
  sqlite3_stmt* prepared = nullptr;
  const int result = sqlite3_prepare_v2(database, sql.c_str(), -1, &prepared, nullptr);
  const std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> statement{prepared, sqlite3_finalize};
  if (result != SQLITE_OK) throw SqliteError(database);
  Rows rows;
  while (true) {
    const int step = sqlite3_step(prepared);
    if (step == SQLITE_DONE) return rows;
    if (step != SQLITE_ROW) throw SqliteError(database);
    std::vector<std::string>& row = rows.emplace_back();
    for (int column = 0; column < sqlite3_column_count(prepared); ++column) {
      const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(prepared, column));
      row.emplace_back(text == nullptr ? "" : text);
    }
  }
}

// Names and declared types. None for a view that the file itself cannot answer.
Rows ColumnsOf(sqlite3* database, const std::string& table) {
  try {
    return RowsOf(database, "SELECT name, type FROM pragma_table_info(" + SqlStringLiteral(table) +
                                ",'main')");
  } catch (const RuntimeError& error) {
    if (error.number != Session::kStatementRejected) throw;
    return {};
  }
}

// The columns that an index of the table begins with.
std::set<std::string> IndexedColumns(sqlite3* database, const std::string& table) {
  std::set<std::string> columns;
  for (const auto& row : RowsOf(
           database, "SELECT i.name FROM pragma_index_list(" + SqlStringLiteral(table) +
                         ",'main') l, pragma_index_info(l.name,'main') i WHERE i.seqno=0 AND NOT "
                         "l.partial"))
    columns.insert(row[0]);
  return columns;
}

bool HoldsTextsWithDigits(sqlite3* database, const std::string& table, const std::string& column) {
  const std::string name = SqlQuotedName(column);
  const std::string from = "SELECT 1 FROM main." + SqlQuotedName(table) + " WHERE " + name;
  // Two look-ups in the index: numbers stand before all texts.
  return RowsOf(database, from + "<'0' LIMIT 1").empty() &&
         RowsOf(database, from + ">=':' LIMIT 1").empty();
}

}  // namespace

SqlSchema ReadSchema(sqlite3* database) {
  SqlSchema schema;
  for (const auto& found : RowsOf(
           database,
           "SELECT name FROM main.sqlite_schema WHERE type IN ('table','view') AND name NOT LIKE "
           "'sqlite^_%' ESCAPE '^' AND sql NOT LIKE 'CREATE VIRTUAL%'")) {
    SqlTable table{found[0], {}};
    const std::set<std::string> indexed = IndexedColumns(database, table.name);
    for (const auto& row : ColumnsOf(database, table.name)) {
      SqlColumn column{row[0], DeclaredKind(row[1])};
      column.is_searchable = IsDateKind(column.kind) && indexed.contains(column.name) &&
                             HoldsTextsWithDigits(database, table.name, column.name);
      table.columns.push_back(std::move(column));
    }
    if (!table.columns.empty()) schema.tables.emplace(UpperAscii(table.name), std::move(table));
  }
  return schema;
}

}  // namespace pxscheduler
