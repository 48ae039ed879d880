#include "data/odbc/default_drivers.h"

namespace pxscheduler {

// The last one is part of Windows.
std::vector<std::wstring> DefaultDrivers() {
  return {L"ODBC Driver 18 for SQL Server", L"ODBC Driver 17 for SQL Server", L"SQL Server"};
}

std::wstring DriverToInstall() { return L"\"ODBC Driver 18 for SQL Server\""; }

}  // namespace pxscheduler
