#pragma once

#include <cstdint>
#include <optional>

#include "data/sqlite/sql_cursor.h"

namespace pxscheduler {

// Takes the SET statements at the cursor. Only the lock time-out has a meaning here: it is the
// result, in milliseconds, -1 for no limit. Options that are ON or OFF and isolation levels are
// dropped. Raises SqlSyntaxError for a time-out that is not a number and for any other setting.
std::optional<std::int64_t> TakeSettings(SqlCursor& cursor);

}  // namespace pxscheduler
