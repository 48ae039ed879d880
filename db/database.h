#pragma once

#include <string>

#include "data/connection.h"
#include "platform/code_page.h"
#include "platform/passwords.h"
#include "platform/registry.h"
#include "platform/system.h"

namespace pxscheduler {

// Opens the connection to the server and database of a data source registered for ODBC, first with
// the installation's password, then once with the fallback. A connection that cannot be opened is
// left closed; System::Warn tells why. Raises what the server answers to the lock time-out.
void OpenDatabase(System& system, const Registry& registry, const CodePage& ansi,
                  const Passwords& passwords, Connection& connection, const std::wstring& dsn);

// Whether the connection opened. Where it did not, `reason` gets the provider's words.
bool OpenConnection(Connection& connection, const std::wstring& data_source,
                    const std::wstring& initial_catalog, const std::wstring& user_id,
                    const std::wstring& password, const std::wstring& provider,
                    std::wstring& reason);

}  // namespace pxscheduler
