#pragma once

#include <functional>

#include "data/rows/session.h"
#include "platform/civil_time.h"

namespace pxscheduler {

// An opener of SQLite database files (path separators "\" or "/"), which answer the SQL Server
// dialect as far as TranslateSql and AddSqlFunctions know it. Files are opened read-only and
// nothing is created beside them. Text compares as under SQL Server's usual collation, whatever the
// collation that the file declares for a column.
//
// A declared type decides what a value becomes: DATE and its kin a DateTime (a text that holds none
// stays text), BIT a Boolean, DECIMAL, NUMERIC and MONEY a Decimal, REAL and FLOAT a double; every
// other value is what the engine stores. The current database is the Initial Catalog, or the file's
// name without its ending where that is blank.
//
// `local_time` is what GETDATE gives; it is asked once a statement.
SessionOpener SqliteOpener(std::function<DateTime()> local_time);

}  // namespace pxscheduler
