#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace pxscheduler {

// Where a SQL Server listens, as a data source names it.
struct ServerAddress {
  std::wstring host;
  std::uint16_t port = 0;  // 0: none given
  std::wstring instance;   // "": the default one, or the one at the port

  friend bool operator==(const ServerAddress&, const ServerAddress&) = default;
};

inline constexpr std::uint16_t kDefaultSqlServerPort = 1433;

// Parses "host", "host,port" and "host\instance", each also behind "tcp:". "", "." and "(local)"
// are this machine. A port overrides an instance, and "MSSQLSERVER" is the default instance. Raises
// a provider failure (-2147467259) for anything else.
ServerAddress ParseServerAddress(std::wstring_view data_source);

}  // namespace pxscheduler
