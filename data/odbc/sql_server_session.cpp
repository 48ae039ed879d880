#include "data/odbc/sql_server_session.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "data/odbc/connection_text.h"
#include "data/odbc/driver_library.h"
#include "data/odbc/handles.h"
#include "data/odbc/row_set_reader.h"
#include "data/odbc/server_address.h"
#include "data/odbc/server_lookup.h"
#include "data/odbc/wide_text.h"

namespace pxscheduler {
namespace {

using std::chrono::seconds;
using Clock = std::chrono::steady_clock;

// The browser of a server answers at once or never.
constexpr seconds kLongestInstanceLookup{5};

// At least one, because 0 means no time-out.
SQLULEN SecondsUntil(Clock::time_point deadline) {
  const auto left = std::chrono::ceil<seconds>(deadline - Clock::now());
  return static_cast<SQLULEN>(std::max<seconds::rep>(left.count(), 1));
}

class DriverConnection {
 public:
  DriverConnection() : handle_(environment_.Get()) {}
  ~DriverConnection() { SQLDisconnect(handle_.Get()); }
  DriverConnection(const DriverConnection&) = delete;
  DriverConnection& operator=(const DriverConnection&) = delete;

  SQLHANDLE Get() const { return handle_.Get(); }

  // Returns what kept the connection from opening: nothing once it is open. May be repeated.
  std::vector<Diagnostic> Connect(std::wstring_view connection_text, Clock::time_point deadline) {
    SQLSetConnectAttrW(handle_.Get(), SQL_ATTR_LOGIN_TIMEOUT,
                       AttributeValue(SecondsUntil(deadline)), 0);
    std::vector<SQLWCHAR> text = ToDriverText(connection_text);
    const SQLRETURN result = SQLDriverConnectW(handle_.Get(), nullptr, text.data(), SQL_NTS,
                                               nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT);
    if (SQL_SUCCEEDED(result)) return {};
    std::vector<Diagnostic> diagnostics = ReadDiagnostics(SQL_HANDLE_DBC, handle_.Get());
    if (diagnostics.empty()) diagnostics.push_back({.state = "HY000", .text = L"No connection."});
    return diagnostics;
  }

 private:
  Environment environment_;
  ConnectionHandle handle_;
};

// FreeTDS reports a server without encryption as "connection failed" alone, and every other failure
// with a record of its own.
bool LacksEncryption(const std::vector<Diagnostic>& diagnostics) {
  constexpr std::int32_t kConnectionFailed = 20002;
  const auto is_unspecific = [](const Diagnostic& each) {
    return each.native == kConnectionFailed || (each.native == 0 && each.state == "08001");
  };
  return std::ranges::all_of(diagnostics, is_unspecific) &&
         std::ranges::find(diagnostics, kConnectionFailed, &Diagnostic::native) !=
             diagnostics.end();
}

class SqlServerSession : public Session {
 public:
  SqlServerSession(std::unique_ptr<DriverConnection> connection, seconds command_timeout)
      : connection_(std::move(connection)), command_timeout_(command_timeout) {}

  void Execute(const std::wstring& sql) override {
    const Statement statement(connection_->Get());
    Run(statement, sql);
    do {
      if (HasRows(statement)) DropRows(statement);
    } while (NextResult(statement));
  }

  RowStore Query(const std::wstring& sql) override {
    const Statement statement(connection_->Get());
    Run(statement, sql);
    while (!HasRows(statement))
      if (!NextResult(statement)) return {};
    RowStore rows = ReadRowSet(statement);
    // An error right behind the rows concerns them, or a statement that belongs to them.
    while (NextResult(statement) && !HasRows(statement)) {
    }
    return rows;
  }

  std::wstring CurrentDatabase() override {
    const RowStore rows = Query(L"SELECT DB_NAME()");
    if (rows.RowCount() == 1 && rows.ColumnCount() == 1) {
      const Value name = rows.Read(0, 0);
      if (const auto* text = std::get_if<std::wstring>(&name)) return *text;
    }
    throw ProviderFailure(L"The server does not tell the name of the current database.");
  }

 private:
  void Run(const Statement& statement, const std::wstring& sql) {
    // A driver would send only the part in front of it.
    if (sql.find(L'\0') != std::wstring::npos)
      throw RuntimeError{kStatementRejected, L"The statement holds a NUL character."};
    Check(statement,
          SQLSetStmtAttrW(statement.Get(), SQL_ATTR_QUERY_TIMEOUT,
                          AttributeValue(static_cast<SQLULEN>(command_timeout_.count())), 0));
    std::vector<SQLWCHAR> text = ToDriverText(sql);
    const SQLRETURN result = SQLExecDirectW(statement.Get(), text.data(), SQL_NTS);
    if (result != SQL_NO_DATA) Check(statement, result);  // no data: no row was affected
  }

  static bool HasRows(const Statement& statement) {
    SQLSMALLINT columns = 0;
    Check(statement, SQLNumResultCols(statement.Get(), &columns));
    return columns > 0;
  }

  static void DropRows(const Statement& statement) {
    SQLRETURN result = SQL_SUCCESS;
    while (result != SQL_NO_DATA) {
      result = SQLFetch(statement.Get());
      if (result != SQL_NO_DATA) Check(statement, result);
    }
  }

  static bool NextResult(const Statement& statement) {
    const SQLRETURN result = SQLMoreResults(statement.Get());
    if (result == SQL_NO_DATA) return false;
    Check(statement, result);
    return true;
  }

  std::unique_ptr<DriverConnection> connection_;
  seconds command_timeout_;
};

std::unique_ptr<Session> OpenWith(const Driver& driver, Resolver& resolver,
                                  const SqlServerOptions& options,
                                  const ConnectionSettings& settings) {
  const Clock::time_point deadline = Clock::now() + options.login_timeout;
  const ServerAddress address = ParseServerAddress(settings.data_source);
  OdbcSettings odbc{.driver = driver.name,
                    .dialect = driver.dialect,
                    .host = address.host,
                    .port = address.port != 0 ? address.port : kDefaultSqlServerPort,
                    .user_id = settings.user_id,
                    .password = settings.password,
                    .database = settings.initial_catalog};
  std::wstring text = ConnectionText(odbc);
  // Resolved here first, because the driver, which gets the name, waits for the resolver without
  // limit.
  const ResolvedHost host = ResolveHost(resolver, address.host, options.login_timeout);
  if (!address.instance.empty()) {
    odbc.port = FindInstancePort(host, address.instance,
                                 std::min(options.login_timeout, kLongestInstanceLookup));
    text = ConnectionText(odbc);
  }

  auto connection = std::make_unique<DriverConnection>();
  std::vector<Diagnostic> diagnostics = connection->Connect(text, deadline);
  if (driver.dialect == Dialect::kFreeTds && LacksEncryption(diagnostics)) {
    odbc.encryption = Encryption::kIfOffered;
    diagnostics = connection->Connect(ConnectionText(odbc), deadline);
  }
  if (!diagnostics.empty()) throw ConnectError(diagnostics);
  return std::make_unique<SqlServerSession>(std::move(connection), options.command_timeout);
}

// A whole number of seconds from 1, else `otherwise`.
seconds ReadSeconds(const std::wstring& text, seconds otherwise) {
  seconds::rep value = 0;
  for (const wchar_t digit : text) {
    if (digit < L'0' || digit > L'9' || value > 3600) return otherwise;
    value = value * 10 + (digit - L'0');
  }
  return value > 0 ? seconds(value) : otherwise;
}

}  // namespace

SqlServerOptions ReadSqlServerOptions(const System& system) {
  const SqlServerOptions defaults;
  return {
      .driver = system.EnvironmentVariable(L"PXSCHEDULER_ODBC_DRIVER"),
      .login_timeout = ReadSeconds(system.EnvironmentVariable(L"PXSCHEDULER_TEST_LOGIN_TIMEOUT"),
                                   defaults.login_timeout),
      .command_timeout =
          ReadSeconds(system.EnvironmentVariable(L"PXSCHEDULER_TEST_COMMAND_TIMEOUT"),
                      defaults.command_timeout)};
}

std::unique_ptr<Session> OpenSqlServerSession(const SqlServerOptions& options,
                                              const ConnectionSettings& settings) {
  Resolver resolver;
  return OpenWith(FindDriver(options.driver), resolver, options, settings);
}

SessionOpener SqlServerOpener(System& system) {
  return [&system, resolver = std::make_shared<Resolver>(),
          warned = false](const ConnectionSettings& settings) mutable {
    const SqlServerOptions options = ReadSqlServerOptions(system);
    Driver driver;
    try {
      driver = FindDriver(options.driver);
    } catch (const RuntimeError& error) {
      if (!std::exchange(warned, true)) system.Warn(error.description);
      throw;
    }
    return OpenWith(driver, *resolver, options, settings);
  };
}

}  // namespace pxscheduler
