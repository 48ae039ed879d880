#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace pxscheduler {

// Where a SQL Server listens, as a data source names it.
struct ServerAddress {
  std::wstring host;
  std::uint16_t port = 0;  // 0: none is named
  std::wstring instance;   // of a host that names no port; "" for the default instance

  friend bool operator==(const ServerAddress&, const ServerAddress&) = default;
};

inline constexpr std::uint16_t kDefaultSqlServerPort = 1433;

// Takes "host", "host,port" and "host\instance" apart, each also behind "tcp:". "", "." and
// "(local)" are this machine. A port makes an instance name superfluous, and "MSSQLSERVER" is the
// default instance. Raises a provider failure (-2147467259) for anything that no TCP address can
// be made of.
ServerAddress ParseServerAddress(std::wstring_view data_source);

}  // namespace pxscheduler
