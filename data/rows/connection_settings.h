#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace pxscheduler {

// What a connection string asks for. A keyword that it lacks leaves its text empty.
struct ConnectionSettings {
  std::wstring provider;
  std::wstring user_id;
  std::wstring password;
  std::wstring initial_catalog;
  std::wstring data_source;

  friend bool operator==(const ConnectionSettings&, const ConnectionSettings&) = default;
};

// Reads keyword=value pairs separated by ";". Nothing is quoted: a value ends at the first ";" and
// may hold "=". Keywords compare without case and without surrounding blanks; where one is given
// twice the last counts. Blanks around a value are dropped, except in a password. Other keywords,
// and parts without "=", are ignored.
ConnectionSettings ReadConnectionString(std::wstring_view text);

// The path behind "sqlite:" (compared without case), which names a database file of the embedded
// engine; nullopt for any other data source, which is a SQL Server.
std::optional<std::wstring> EmbeddedDatabasePath(std::wstring_view data_source);

}  // namespace pxscheduler
