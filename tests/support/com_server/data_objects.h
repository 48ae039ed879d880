#pragma once

#include "tests/support/com_server/automation.h"

namespace pxscheduler {

// The caller owns the first reference.
IDispatch* NewConnectionObject();
IDispatch* NewRecordsetObject();
IDispatch* NewTextControlObject();

}  // namespace pxscheduler
