#include "db/database.h"

#include "config/helper_library.h"
#include "platform/runtime_error.h"

namespace pxscheduler {
namespace {

constexpr wchar_t kDataSourcesKey[] = L"software\\odbc\\odbc.ini\\";
constexpr wchar_t kProvider[] = L"SQLOLEDB";
constexpr wchar_t kLogin[] = L"appuser";
constexpr wchar_t kFallbackPassword[] = L"tonal";

struct DataSource {
  std::wstring server;
  std::wstring database;
};

DataSource ReadDataSource(const Registry& registry, const CodePage& ansi, RegistryRoot root,
                          const std::wstring& dsn) {
  const std::wstring key = kDataSourcesKey + dsn;
  DataSource source{GetRegValue(registry, ansi, root, key, L"Server", L""),
                    GetRegValue(registry, ansi, root, key, L"Database", L"")};
  if (IsBlank(source.server)) source.server = dsn;
  return source;
}

void WarnOfClosedDatabase(System& system, const std::wstring& dsn, const DataSource& source,
                          const std::wstring& reason, const std::wstring& fallback_reason) {
  std::wstring line = L"The database \"" + source.database + L"\" on \"" + source.server +
                      L"\" (data source \"" + dsn + L"\") could not be opened: " + reason;
  if (fallback_reason != reason) line += L" With the fallback password: " + fallback_reason;
  system.Warn(line);
}

}  // namespace

void OpenDatabase(System& system, const Registry& registry, const CodePage& ansi,
                  const Passwords& passwords, Connection& connection, const std::wstring& dsn) {
  DataSource source = ReadDataSource(registry, ansi, RegistryRoot::kLocalMachine, dsn);
  // Without a machine-wide database the data source counts as the user's own, server and all.
  if (IsBlank(source.database))
    source = ReadDataSource(registry, ansi, RegistryRoot::kCurrentUser, dsn);

  std::wstring reason;
  std::wstring fallback_reason;
  if (!OpenConnection(connection, source.server, source.database, kLogin, Qzpwd(passwords, ansi),
                      kProvider, reason) &&
      !OpenConnection(connection, source.server, source.database, kLogin, kFallbackPassword,
                      kProvider, fallback_reason))
    WarnOfClosedDatabase(system, dsn, source, reason, fallback_reason);

  if (connection.State() == Connection::kStateOpen) {
    const std::wstring lock_timeout = GetRegValue(registry, ansi, RegistryRoot::kLocalMachine,
                                                  kProductKey, L"LockTimeout", L"60000");
    WithDetails(
        [&] {
          return PlaceOf(registry, RegistryRoot::kLocalMachine, kProductKey, L"LockTimeout") +
                 L" must be a number of milliseconds; it is \"" + lock_timeout + L"\".";
        },
        [&] {
          connection.Execute(L"SET LOCK_TIMEOUT " + lock_timeout, Connection::kOptionUnspecified);
        });
  }
}

bool OpenConnection(Connection& connection, const std::wstring& data_source,
                    const std::wstring& initial_catalog, const std::wstring& user_id,
                    const std::wstring& password, const std::wstring& provider,
                    std::wstring& reason) {
  const std::wstring connection_string = L"Provider=" + provider + L";Persist Security Info=False" +
                                         L";User ID=" + user_id + L";Password=" + password +
                                         L";Initial Catalog=" + initial_catalog + L";Data Source=" +
                                         data_source;
  try {
    connection.Open(connection_string, L"", L"", Connection::kOptionUnspecified);
    return true;
  } catch (const RuntimeError& error) {
    reason = error.description;
    return false;
  }
}

}  // namespace pxscheduler
