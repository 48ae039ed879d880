#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "data/rows/session.h"
#include "platform/system.h"

namespace pxscheduler {

// How SQL Server is reached.
struct SqlServerOptions {
  std::wstring driver;  // FindDriver's argument
  std::chrono::seconds login_timeout{15};
  std::chrono::seconds command_timeout{30};
};

// The options of the environment: PXSCHEDULER_ODBC_DRIVER, and for tests only
// PXSCHEDULER_TEST_LOGIN_TIMEOUT and PXSCHEDULER_TEST_COMMAND_TIMEOUT, whole seconds from 1.
SqlServerOptions ReadSqlServerOptions(const System& system);

// Opens a session with a SQL Server over ODBC. Raises a provider failure for a data source, name or
// password that no connection string can carry, for a missing driver, and for a server that cannot
// be reached or refuses the login, at the latest when the login time-out is over.
//
// A command fails that the server does not answer within the command time-out. The driver then
// waits as long again for the server to confirm the cancellation.
std::unique_ptr<Session> OpenSqlServerSession(const SqlServerOptions& options,
                                              const ConnectionSettings& settings);

// OpenSqlServerSession with the options of the environment. A missing driver is also reported on
// the system's warning line, once, because a run may have to pass over a connection that fails.
SessionOpener SqlServerOpener(System& system);

}  // namespace pxscheduler
