#pragma once

#include "app/platform.h"

namespace pxscheduler {

inline constexpr wchar_t kApplicationTitle[] = L"Vantreo Scheduler";

// One run of the tool, from the command line to the end block of the run log. Raises a RuntimeError
// where the run ends without its end block.
void Main(const Platform& platform);

}  // namespace pxscheduler
