#pragma once

#include <string>
#include <vector>

namespace pxscheduler {

// The drivers for SQL Server that this kind of machine may have, the best one first: paths of
// libraries, which hold a "/", or names of installed drivers.
std::vector<std::wstring> DefaultDrivers();

// What to install where it has none of them: the object of a sentence.
std::wstring DriverToInstall();

}  // namespace pxscheduler
