#include "data/odbc/default_drivers.h"

#include "text/utf8.h"

namespace pxscheduler {

std::vector<std::wstring> DefaultDrivers() {
  // Debian's folder for libraries of the architecture that the program is built for comes first.
  return {FromUtf8("/usr/lib/" PXSCHEDULER_LIBRARY_ARCHITECTURE "/odbc/libtdsodbc.so"),
          L"/usr/lib/odbc/libtdsodbc.so", L"/usr/lib64/libtdsodbc.so.0", L"/usr/lib/libtdsodbc.so",
          L"/usr/local/lib/libtdsodbc.so"};
}

std::wstring DriverToInstall() { return L"the package tdsodbc"; }

}  // namespace pxscheduler
