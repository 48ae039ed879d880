#include "data/sqlite/database_file.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

#include "data/rows/session.h"
#include "text/hexadecimal.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

std::filesystem::path NativePath(std::wstring path) {
  std::replace(path.begin(), path.end(), L'\\', L'/');
  const std::string utf8 = ToUtf8(path);
  return std::u8string{utf8.begin(), utf8.end()};
}

std::string Utf8Of(const std::filesystem::path& path) {
  const std::u8string utf8 = path.u8string();
  return {utf8.begin(), utf8.end()};
}

[[noreturn]] void RaiseCannotOpen(const std::wstring& path, std::wstring_view reason) {
  throw RuntimeError{Session::kProviderFailure, L"Cannot open the database file \"" + path +
                                                    L"\": " + std::wstring{reason} + L"."};
}

constexpr int kLongestWaitMs = 60'000;

bool HasWriteAheadLogBeside(const std::filesystem::path& file) {
  const auto exists = [&file](const char* ending) {
    std::filesystem::path beside = file;
    beside += ending;
    std::error_code error;
    return std::filesystem::exists(beside, error) || error;
  };
  return exists("-wal") || exists("-shm");
}

// The file as a URI (RFC 3986), which is how the engine takes the "immutable" flag.
std::string ImmutableUri(const std::filesystem::path& file) {
  std::string path = Utf8Of(file);
  std::replace(path.begin(), path.end(), '\\', '/');
  // A drive or a server name is part of the path, not the URI's authority.
  std::string uri = file.has_root_name() ? "file:///" : "file:";
  for (const char character : path) {
    const auto byte = static_cast<unsigned char>(character);
    if (character == '%' || character == '?' || character == '#') {
      uri += '%';
      uri += kCapitalHexDigits[byte >> 4U];
      uri += kCapitalHexDigits[byte & 15U];
    } else {
      uri += character;
    }
  }
  return uri + "?immutable=1";
}

// What opening gives is seen at the first reading.
struct Opened {
  SqliteDatabase connection;
  int result;
};

Opened Open(const std::string& name, int flags) {
  sqlite3* opened = nullptr;
  // A connection serves one thread and needs no locks against others.
  int result = sqlite3_open_v2(name.c_str(), &opened, flags | SQLITE_OPEN_NOMUTEX, nullptr);
  SqliteDatabase connection{opened};
  if (result != SQLITE_OK) return {std::move(connection), result};
  sqlite3_busy_timeout(opened, kLongestWaitMs);
  // "name" is a name and never a text.
  sqlite3_db_config(opened, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
  result = sqlite3_exec(opened, "PRAGMA schema_version", nullptr, nullptr, nullptr);
  return {std::move(connection), result};
}

// Of a file in write-ahead mode: its log can be neither found nor made.
bool IsWithoutLog(int result) { return result == SQLITE_CANTOPEN || result == SQLITE_READONLY; }

}  // namespace

DatabaseFile OpenDatabaseFile(const std::wstring& path) {
  std::error_code error;
  const std::filesystem::path file = std::filesystem::absolute(NativePath(path), error);
  const std::filesystem::file_status status = std::filesystem::status(file, error);
  if (path.empty() || !std::filesystem::exists(status))
    RaiseCannotOpen(path, L"there is no such file");
  if (!std::filesystem::is_regular_file(status)) RaiseCannotOpen(path, L"it is not a file");
  // Who may write at all is the last to leave and takes the log away.
  Opened opened = Open(Utf8Of(file), SQLITE_OPEN_READWRITE);
  const bool is_immutable = IsWithoutLog(opened.result) && !HasWriteAheadLogBeside(file);
  if (is_immutable) opened = Open(ImmutableUri(file), SQLITE_OPEN_READONLY | SQLITE_OPEN_URI);
  if (opened.result == SQLITE_NOTADB) throw SqliteError(opened.connection.get());
  if (opened.result != SQLITE_OK)
    RaiseCannotOpen(
        path, FromUtf8(opened.connection == nullptr ? sqlite3_errstr(opened.result)
                                                    : sqlite3_errmsg(opened.connection.get())));
  return {std::move(opened.connection), is_immutable};
}

bool HasWriteAheadLog(const std::wstring& path) { return HasWriteAheadLogBeside(NativePath(path)); }

std::wstring DatabaseFileStem(const std::wstring& path) {
  return FromUtf8(Utf8Of(NativePath(path).stem()));
}

RuntimeError SqliteError(sqlite3* database) {
  switch (sqlite3_errcode(database)) {
    case SQLITE_ERROR:
    case SQLITE_AUTH:
    case SQLITE_READONLY:
    case SQLITE_CONSTRAINT:
    case SQLITE_MISMATCH:
    case SQLITE_RANGE:
    case SQLITE_TOOBIG:
      return {Session::kStatementRejected, FromUtf8(sqlite3_errmsg(database))};
    case SQLITE_NOMEM:
      return OutOfMemory();
    default:
      return {Session::kProviderFailure, FromUtf8(sqlite3_errmsg(database))};
  }
}

}  // namespace pxscheduler
