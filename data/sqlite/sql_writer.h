#pragma once

#include <string>
#include <vector>

#include "data/sqlite/sql_cursor.h"
#include "data/sqlite/sql_dates.h"
#include "data/sqlite/sql_schema.h"
#include "data/sqlite/sql_tree.h"

namespace pxscheduler {

struct WrittenSql {
  std::string sql;                 // of SQLite
  std::vector<SqlColumn> columns;  // of the result; dates are texts in it
};

// Writes a query as one of SQLite's that gives what SQL Server would, or stops. `cursor` is what
// the query was read from, and says where in it something is wrong; `now` is what GETDATE gives.
// Raises SqlSyntaxError for names that there are not and for what has no counterpart.
//
// Every expression is given SQL Server's type, from the declared types of the columns on. Where two
// types meet, one is converted before SQLite compares: texts by kSqlCollation, dates as
// milliseconds.
WrittenSql WriteQuery(const SqlQuery& query, const SqlSchema& schema, const SqlCursor& cursor,
                      SqlMoment now);

}  // namespace pxscheduler
