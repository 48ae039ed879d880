#pragma once

#include <string>
#include <vector>

namespace pxscheduler {

// The drivers for SQL Server that may be installed on this system, the best one first: paths of
// libraries, which hold a "/", or names that the driver manager knows.
std::vector<std::wstring> DefaultDrivers();

// What to install where none is: the object of a sentence.
std::wstring DriverToInstall();

}  // namespace pxscheduler
