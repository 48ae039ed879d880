#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "data/rows/session.h"
#include "platform/system.h"

namespace pxscheduler {

// How SQL Server is reached.
struct SqlServerOptions {
  std::wstring driver;  // as FindDriver takes it
  std::chrono::seconds login_timeout{15};
  std::chrono::seconds command_timeout{30};
};

// The options that the environment asks for: PXSCHEDULER_ODBC_DRIVER, and for tests only
// PXSCHEDULER_TEST_LOGIN_TIMEOUT and PXSCHEDULER_TEST_COMMAND_TIMEOUT, whole seconds from 1.
SqlServerOptions ReadSqlServerOptions(const System& system);

// Opens a session with a SQL Server over ODBC. Raises a provider failure for a data source, name or
// password that cannot be expressed, a missing driver, and whatever keeps the server from being
// reached or from accepting the login, at the latest when the login time-out is over.
//
// A command that the server does not answer within the command time-out fails. Where the server
// does not even confirm that it was cancelled, the driver waits for that as long again.
std::unique_ptr<Session> OpenSqlServerSession(const SqlServerOptions& options,
                                              const ConnectionSettings& settings);

// OpenSqlServerSession under the options of the environment. A driver that is missing is reported
// on the system's warning line too, because whoever opens a connection may have to keep silent.
SessionOpener SqlServerOpener(System& system);

}  // namespace pxscheduler
