#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "data/odbc/odbc_headers.h"
#include "platform/runtime_error.h"

namespace pxscheduler {

// One record of what the driver has to say about a call.
struct Diagnostic {
  std::string state;        // SQLSTATE, five characters
  std::int32_t native = 0;  // the server's error number, or the driver's own; 0 where it has none
  std::wstring text;        // without the names of the driver and its manager in brackets
};

// Every record of the last call on a handle, in the driver's order.
std::vector<Diagnostic> ReadDiagnostics(SQLSMALLINT handle_type, SQLHANDLE handle);

// Whether the record stops nothing, as far as its SQLSTATE says: a message, a lost connection too.
bool IsWarning(const Diagnostic& diagnostic);

// Whether the record is the server's own word on a statement or a login, not the driver's.
bool IsFromServer(const Diagnostic& diagnostic);

// The error of a failed statement: -2147217900 where the server rejected it, -2147467259 for all
// else. Its description has the text and number of every record, warnings last.
RuntimeError StatementError(const std::vector<Diagnostic>& diagnostics);

// The error of a failed attempt to connect: always -2147467259.
RuntimeError ConnectError(const std::vector<Diagnostic>& diagnostics);

}  // namespace pxscheduler
