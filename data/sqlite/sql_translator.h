#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "data/sqlite/sql_cursor.h"
#include "data/sqlite/sql_schema.h"

namespace pxscheduler {

struct TranslatedSql {
  std::string sql;                              // for SQLite; may be empty
  std::optional<std::int64_t> lock_timeout_ms;  // of a SET LOCK_TIMEOUT, -1 for no limit
};

// Rewrites a Transact-SQL query (UTF-8) for SQLite with the functions of sql_functions.h:
//  - leading SET statements are carried out or dropped;
//  - TOP becomes LIMIT; table hints, OPTION (...) and the owner "dbo." are dropped;
//  - "+" and "-" become functions unless both sides are known to be numbers;
//  - date parts, types of CONVERT and CAST, and "name = value" in a select list take SQLite's form;
//  - comparisons with a text ignore case; a text compared with a date is written as the engine
//    writes dates; a sub-select that is compared must give one value.
// What it does not know passes through as it is. Raises SqlSyntaxError for a SET statement or a
// literal that SQL Server would reject, and for nesting deeper than 200.
TranslatedSql TranslateSql(std::string_view sql, const SqlSchema& schema);

}  // namespace pxscheduler
