#pragma once

#include "data/odbc/handles.h"
#include "data/rows/row_store.h"

namespace pxscheduler {

// Reads the statement's current row set to its end: in blocks of rows into bound buffers or, where
// a column is long, row by row with the long values in parts. A store without columns stands for no
// row set. Raises the driver's error wherever it occurs: a row set is never cut short.
RowStore ReadRowSet(const Statement& statement);

}  // namespace pxscheduler
