#pragma once

#include <sqlite3.h>

#include <functional>
#include <map>
#include <string>

#include "data/sqlite/column_type.h"

namespace pxscheduler {

// What the translation of a statement needs to know about the database.
struct SqlSchema {
  std::string database;  // its name, for "Agency.dbo.Clients"
  // By upper-case name, the type that every column of that name has; a name is absent where the
  // types differ.
  std::map<std::string, ColumnType, std::less<>> column_types;
};

// Reads the tables and views, and lays over each a temporary view of the same name whose text
// columns compare by kSqlCollation: so comparisons, joins, ORDER BY and DISTINCT all follow it, and
// the engine uses an index of the file only where its order is the same. The temporary views are in
// memory. Raises what SqliteError gives.
SqlSchema PrepareSchema(sqlite3* database);

}  // namespace pxscheduler
