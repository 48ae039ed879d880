#pragma once

#include <sqlite3.h>

#include "data/sqlite/sql_dates.h"

namespace pxscheduler {

// Adds to a connection the functions of SQL Server that saved queries use, LIKE with its patterns,
// and the collation kSqlCollation (CompareSqlText); a collation of any other unknown name is the
// same, unless the name says that it tells letter cases apart ("..._CS_...", "..._BIN"). False
// where memory runs out.
//
// `now` is what GETDATE gives. It must outlive the connection and not change while a statement
// runs.
//
// CONVERT and CAST are called as CONVERT(type, length, scale, value, style), with Null for what is
// not given. Two functions stand for operators: kSqlAdd for "+", which joins texts and moves dates
// by days, and kSqlSubtract for "-". The aggregate kSqlOnlyValue gives the one value of a
// sub-select and raises where there are several.
bool AddSqlFunctions(sqlite3* database, const SqlMoment* now);

inline constexpr const char* kSqlCollation = "SQLSERVER";
inline constexpr const char* kSqlAdd = "SQL_ADD";
inline constexpr const char* kSqlSubtract = "SQL_SUBTRACT";
inline constexpr const char* kSqlOnlyValue = "SQL_ONLY_VALUE";

}  // namespace pxscheduler
