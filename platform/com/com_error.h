#pragma once

#include <oaidl.h>
#include <windows.h>

#include <string>

#include "platform/runtime_error.h"

namespace pxscheduler {

// A failed call of a component, numbered as the runtime reports it: nnnn for an automation error
// (facility control, 0x800Annnn), the runtime's own number where the call itself could not be made
// (438 for an unknown member, 450, 13, 6, 7), else the HRESULT as it is. `description` is the
// component's; where it is empty the system's text stands in.
RuntimeError ComError(HRESULT result, const std::wstring& description = {});

// What a component tells about DISP_E_EXCEPTION. Frees the texts in `details`.
RuntimeError ComException(EXCEPINFO& details);

// 429, for a class that is not registered or whose server cannot be loaded.
RuntimeError CannotCreateObject();

// Raises ComError for a result that is a failure.
void CheckResult(HRESULT result);

}  // namespace pxscheduler
