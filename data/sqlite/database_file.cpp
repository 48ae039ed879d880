#include "data/sqlite/database_file.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

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

// Whether the file is in write-ahead mode (the file format's read version, at offset 19, is 2) and
// no other program has it open, since then there would be a log beside it.
bool IsIdleWriteAheadFile(const std::filesystem::path& file) {
  std::array<char, 20> header{};
  std::ifstream stream{file, std::ios::binary};
  if (!stream.read(header.data(), header.size()) || header[19] != 2) return false;
  std::filesystem::path log = file;
  log += "-wal";
  std::error_code error;
  return !std::filesystem::exists(log, error);
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

}  // namespace

SqliteDatabase OpenDatabaseFile(const std::wstring& path) {
  std::error_code error;
  const std::filesystem::path file = std::filesystem::absolute(NativePath(path), error);
  const std::filesystem::file_status status = std::filesystem::status(file, error);
  if (path.empty() || !std::filesystem::exists(status))
    RaiseCannotOpen(path, L"there is no such file");
  if (!std::filesystem::is_regular_file(status)) RaiseCannotOpen(path, L"it is not a file");
  // A reader of a file in write-ahead mode makes a log beside it unless it may take for granted
  // that nobody writes.
  const bool is_immutable = IsIdleWriteAheadFile(file);
  const std::string name = is_immutable ? ImmutableUri(file) : Utf8Of(file);
  sqlite3* opened = nullptr;
  // A connection serves one thread and needs no locks against others.
  const int flags =
      SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX | (is_immutable ? SQLITE_OPEN_URI : 0);
  const int result = sqlite3_open_v2(name.c_str(), &opened, flags, nullptr);
  SqliteDatabase database{opened};
  if (result != SQLITE_OK)
    RaiseCannotOpen(path,
                    FromUtf8(opened == nullptr ? sqlite3_errstr(result) : sqlite3_errmsg(opened)));
  // "name" is a name and never a text.
  sqlite3_db_config(opened, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
  return database;
}

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
