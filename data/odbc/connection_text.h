#pragma once

#include <cstdint>
#include <string>

namespace pxscheduler {

// How a driver reads the values of a connection string.
enum class Dialect {
  kFreeTds,     // "{" begins a value that ends at the first "};"; nothing is doubled
  kStandard,    // "{" begins a value in which "}" is doubled
  kWindowsOwn,  // the same; the driver "SQL Server" of Windows, which verifies any certificate
};

enum class Encryption {
  kWholeSession,  // else no connection
  kIfOffered,     // at least of the login, where the server can
};

struct OdbcSettings {
  std::wstring driver;  // the path of a library, or the name of an installed driver
  Dialect dialect = Dialect::kFreeTds;
  std::wstring host;
  std::uint16_t port = 0;
  std::wstring user_id;
  std::wstring password;
  std::wstring database;  // "": the login's default
  Encryption encryption = Encryption::kWholeSession;
};

// The connection string that passes exactly these settings to the driver. Raises a provider failure
// (-2147467259), which does not repeat the value, for one that no quoting carries unchanged through
// the driver manager and the driver.
std::wstring ConnectionText(const OdbcSettings& settings);

}  // namespace pxscheduler
