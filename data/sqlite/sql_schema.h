#pragma once

#include <sqlite3.h>

#include <map>
#include <string>
#include <vector>

#include "data/sqlite/sql_type.h"

namespace pxscheduler {

struct SqlColumn {
  std::string name;
  SqlKind kind = SqlKind::kUnknown;
  // A date column with an index, in which nothing but texts that begin with a digit stands: a range
  // of dates is a range of its texts.
  bool is_searchable = false;
};

struct SqlTable {
  std::string name;
  std::vector<SqlColumn> columns;
};

// What the translation of a statement needs to know about the database.
struct SqlSchema {
  std::string database;                    // its name, for "Agency.dbo.Clients"
  std::map<std::string, SqlTable> tables;  // and views, by their names in upper case
};

// Reads the tables and views of the file; one that the file itself cannot answer is left out.
// Raises what SqliteError gives.
SqlSchema ReadSchema(sqlite3* database);

}  // namespace pxscheduler
