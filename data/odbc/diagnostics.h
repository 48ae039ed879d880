#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "data/odbc/odbc_headers.h"
#include "platform/runtime_error.h"

namespace pxscheduler {

// One diagnostic record of a call.
struct Diagnostic {
  std::string state;        // SQLSTATE, five characters
  std::int32_t native = 0;  // the error number of the server or the driver, 0 for none
  std::wstring text;        // without the names of the driver and its manager in brackets
};

// Every record of the last call on a handle, in the driver's order.
std::vector<Diagnostic> ReadDiagnostics(SQLSMALLINT handle_type, SQLHANDLE handle);

// Whether the SQLSTATE is of class 01, which is that of messages, but may be that of a lost
// connection too.
bool IsWarning(const Diagnostic& diagnostic);

// Whether the server, not the driver, reports an error of a statement or a login.
bool IsFromServer(const Diagnostic& diagnostic);

// The error of a failed statement: -2147217900 where the server rejected it, else -2147467259. Its
// description holds the text and number of every record, warnings last.
RuntimeError StatementError(const std::vector<Diagnostic>& diagnostics);

// The error of a failed attempt to connect: always -2147467259.
RuntimeError ConnectError(const std::vector<Diagnostic>& diagnostics);

}  // namespace pxscheduler
