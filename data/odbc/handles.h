#pragma once

#include <algorithm>

#include "data/odbc/diagnostics.h"
#include "data/odbc/odbc_headers.h"

namespace pxscheduler {

// ODBC passes the whole numbers of attributes as pointers.
inline SQLPOINTER AttributeValue(SQLULEN value) {
  return reinterpret_cast<SQLPOINTER>(value);  // NOLINT(performance-no-int-to-ptr)
}

// Owns a handle. Its parent must live longer.
template <SQLSMALLINT kType, SQLSMALLINT kParentType>
class Handle {
 public:
  // Raises a provider failure.
  explicit Handle(SQLHANDLE parent) {
    if (!SQL_SUCCEEDED(SQLAllocHandle(kType, parent, &handle_)))
      throw ConnectError(ReadDiagnostics(kParentType, parent));
  }
  ~Handle() { SQLFreeHandle(kType, handle_); }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;

  SQLHANDLE Get() const { return handle_; }

 private:
  SQLHANDLE handle_ = SQL_NULL_HANDLE;
};

// The environment of ODBC 3.
class Environment {
 public:
  Environment() : handle_(SQL_NULL_HANDLE) {
    SQLSetEnvAttr(handle_.Get(), SQL_ATTR_ODBC_VERSION, AttributeValue(SQL_OV_ODBC3), 0);
  }
  SQLHANDLE Get() const { return handle_.Get(); }

 private:
  Handle<SQL_HANDLE_ENV, SQL_HANDLE_ENV> handle_;
};

using ConnectionHandle = Handle<SQL_HANDLE_DBC, SQL_HANDLE_ENV>;
using Statement = Handle<SQL_HANDLE_STMT, SQL_HANDLE_DBC>;

// Raises the error of a statement's last call unless that succeeded. The records of a success count
// too: a call that fetches a block of rows succeeds where an error cuts the block short.
inline void Check(const Statement& statement, SQLRETURN result) {
  if (result == SQL_SUCCESS) return;
  const auto diagnostics = ReadDiagnostics(SQL_HANDLE_STMT, statement.Get());
  if (!SQL_SUCCEEDED(result) || !std::ranges::all_of(diagnostics, IsWarning))
    throw StatementError(diagnostics);
}

}  // namespace pxscheduler
