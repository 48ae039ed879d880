#pragma once

#include "data/value.h"
#include "platform/com/variant.h"

namespace pxscheduler {

// The value of a field. Empty and Null are Null; a date is read as the system reads one, to the
// nearest second; bytes are a text of hexadecimal digits, as they are with the other kinds of data
// access. Raises TypeMismatch (13) for what no field holds and InvalidProcedureCall (5) for a
// number that is no date.
Value ValueOf(const Variant& variant);

}  // namespace pxscheduler
