#pragma once

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
// may hold "=". Keywords compare without case and without outer blanks; where one is given twice
// the last counts. Blanks around a value are dropped, except in a password. Keywords that are not
// about a member of the result, and pieces without "=", are ignored.
ConnectionSettings ReadConnectionString(std::wstring_view text);

// The path that follows "sqlite:" (compared without case) when the data source begins with it: such
// a data source is a file of the embedded engine, any other one is a SQL Server. Empty otherwise.
bool IsEmbeddedDataSource(std::wstring_view data_source);
std::wstring EmbeddedDatabasePath(std::wstring_view data_source);

}  // namespace pxscheduler
