#pragma once

#include <sqlite3.h>

#include <memory>
#include <string>

#include "platform/runtime_error.h"

namespace pxscheduler {

struct CloseDatabase {
  void operator()(sqlite3* database) const { sqlite3_close_v2(database); }
};
using SqliteDatabase = std::unique_ptr<sqlite3, CloseDatabase>;

// Opens a database file for reading; no file is created beside it. Raises Session::kProviderFailure
// with a text that names the file where it is missing, a folder or unreadable. Whether it holds a
// database shows at the first statement. Path separators may be "\".
SqliteDatabase OpenDatabaseFile(const std::wstring& path);

// The file's name without folders and ending: "Agency" of "C:\data\Agency.db".
std::wstring DatabaseFileStem(const std::wstring& path);

// The connection's last error: Session::kStatementRejected for what is wrong with a statement,
// Session::kProviderFailure for anything else, with the engine's text.
RuntimeError SqliteError(sqlite3* database);

}  // namespace pxscheduler
