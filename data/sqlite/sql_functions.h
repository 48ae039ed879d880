#pragma once

#include <sqlite3.h>

namespace pxscheduler {

// Adds to a connection the functions, named px_..., that translated statements consist of, and the
// collation kSqlCollation (CompareSqlText). False where memory runs out.
//
// Dates are milliseconds since 1970 (SqlValue) but in columns and results, where they are text;
// kinds and date parts are passed as the numbers of SqlKind and DatePart.
bool AddSqlFunctions(sqlite3* database);

inline constexpr const char* kSqlCollation = "SQLSERVER";

}  // namespace pxscheduler
