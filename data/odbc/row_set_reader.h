#pragma once

#include "data/odbc/handles.h"
#include "data/rows/row_store.h"

namespace pxscheduler {

// Reads the statement's current row set to its end: in blocks of rows into bound buffers or, where
// a column is long, row by row with the long values piece by piece. A store without columns where
// the statement has no row set. Raises the driver's error wherever it happens; a row set that
// breaks off is never taken for a shorter one.
RowStore ReadRowSet(const Statement& statement);

}  // namespace pxscheduler
