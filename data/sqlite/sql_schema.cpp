#include "data/sqlite/sql_schema.h"

#include <memory>
#include <set>
#include <string_view>
#include <vector>

#include "data/rows/session.h"
#include "data/sqlite/database_file.h"
#include "data/sqlite/sql_functions.h"
#include "data/sqlite/sql_token.h"

namespace pxscheduler {
namespace {

// The rows of a statement, each as the texts of its columns.
std::vector<std::vector<std::string>> RowsOf(sqlite3* database, const std::string& sql) {
  sqlite3_stmt* prepared = nullptr;
  const int result = sqlite3_prepare_v2(database, sql.c_str(), -1, &prepared, nullptr);
  const std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> statement{prepared, sqlite3_finalize};
  if (result != SQLITE_OK) throw SqliteError(database);
  std::vector<std::vector<std::string>> rows;
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
std::vector<std::vector<std::string>> ColumnsOf(sqlite3* database, const std::string& table) {
  try {
    return RowsOf(database, "SELECT name, type FROM pragma_table_info(" + SqlStringLiteral(table) +
                                ",'main')");
  } catch (const RuntimeError& error) {
    if (error.number != Session::kStatementRejected) throw;
    return {};
  }
}

}  // namespace

SqlSchema PrepareSchema(sqlite3* database) {
  RowsOf(database, "PRAGMA temp_store=MEMORY");
  SqlSchema schema;
  std::set<std::string> ambiguous;
  for (const std::vector<std::string>& table :
       RowsOf(database,
              "SELECT name FROM main.sqlite_schema WHERE type IN ('table','view') AND name NOT "
              "LIKE 'sqlite[_]%' AND sql NOT LIKE 'CREATE VIRTUAL%'")) {
    std::string columns;
    for (const std::vector<std::string>& column : ColumnsOf(database, table[0])) {
      const ColumnType type = ColumnTypeOf(column[1]);
      const std::string upper = UpperAscii(column[0]);
      if (schema.column_types.try_emplace(upper, type).first->second != type)
        ambiguous.insert(upper);
      const std::string name = SqlQuotedName(column[0]);
      if (!columns.empty()) columns += ',';
      columns += name;
      if (type == ColumnType::kText)
        columns += std::string{" COLLATE "} + kSqlCollation + " AS " + name;
    }
    if (!columns.empty())
      RowsOf(database, "CREATE TEMP VIEW " + SqlQuotedName(table[0]) + " AS SELECT " + columns +
                           " FROM main." + SqlQuotedName(table[0]));
  }
  for (const std::string& name : ambiguous) schema.column_types.erase(name);
  return schema;
}

}  // namespace pxscheduler
