#pragma once

#include "app/platform.h"

namespace pxscheduler {

inline constexpr wchar_t kApplicationTitle[] = L"Vantreo Scheduler";

// One run of the tool, from the command line to the end block of the run log. Returns the exit
// status: 0, or that of a request to stop, after which the log has no end block. Raises a
// RuntimeError where the run ends without its end block.
int Main(const Platform& platform);

}  // namespace pxscheduler
