#pragma once

#include <cstdint>
#include <string>

namespace pxscheduler {

// How a driver reads the values of a connection string.
enum class Dialect {
  kFreeTds,     // "{" begins a value that ends at the first "};"; nothing is doubled
  kStandard,    // "{" begins a value in which "}" is doubled
  kWindowsOwn,  // the same; the driver "SQL Server" of the system, which checks any certificate
};

enum class Encryption {
  kWholeSession,  // or no connection at all
  kIfOffered,     // the login at least, where the server can
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

// The connection string that hands these settings, and nothing else, to the driver. Raises a
// provider failure (-2147467259), without the value in its text, for a value that no quoting gets
// through the driver manager and the driver unchanged.
std::wstring ConnectionText(const OdbcSettings& settings);

}  // namespace pxscheduler
