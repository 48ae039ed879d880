#pragma once

// The interface of the driver manager. On Windows its headers use the types of windows.h.
#ifdef _WIN32
#include <windows.h>
#endif
// In the order in which they depend on each other.
#include <sql.h>
#include <sqlext.h>
#include <sqlucode.h>
