#pragma once

#include <optional>

#include "data/sqlite/sql_cursor.h"
#include "data/sqlite/sql_tree.h"

namespace pxscheduler {

// Reads the statement at the cursor, a SELECT that may begin with WITH, up to its end or to the ";"
// behind it. Hints are dropped. Raises SqlSyntaxError for anything that is not understood whole,
// and for what is nested deeper than a hundred levels.
SqlQuery ParseStatement(SqlCursor& cursor);

}  // namespace pxscheduler
