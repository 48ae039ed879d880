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

// A database that nothing is written to.
struct DatabaseFile {
  SqliteDatabase connection;
  // The engine takes for granted that nobody writes to the file meanwhile.
  bool is_immutable = false;
};

// Opens a database file as any reader does, beside programs that write to it. Statements wait a
// minute for a lock at most, until sqlite3_busy_timeout says otherwise. A file in write-ahead mode
// is immutable where its folder cannot be written and no log lies in it. Raises
// Session::kProviderFailure with a text that names the file where it is missing, a folder or
// unreadable; what is no database raises it with the engine's text. Path separators may be "\".
DatabaseFile OpenDatabaseFile(const std::wstring& path);

// Whether a write-ahead log or its index lies beside the file, as while a program writes to it.
bool HasWriteAheadLog(const std::wstring& path);

// The file's name without folders and ending: "Agency" of "C:\data\Agency.db".
std::wstring DatabaseFileStem(const std::wstring& path);

// The connection's last error: Session::kStatementRejected for what is wrong with a statement,
// Session::kProviderFailure for anything else, with the engine's text.
RuntimeError SqliteError(sqlite3* database);

}  // namespace pxscheduler
