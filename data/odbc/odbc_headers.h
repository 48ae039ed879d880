#pragma once

// The interface of the driver manager. Its headers on Windows need the types of windows.h.
#ifdef _WIN32
#include <windows.h>
#endif
// In the order of their own needs.
#include <sql.h>
#include <sqlext.h>
#include <sqlucode.h>
