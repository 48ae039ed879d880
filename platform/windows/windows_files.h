#pragma once

#include <windows.h>

#include <string>
#include <string_view>
#include <utility>

#include "platform/runtime_error.h"

namespace pxscheduler {

// A handle to a file that is closed with its owner.
class FileHandle {
 public:
  explicit FileHandle(HANDLE handle) : handle_(handle) {}
  FileHandle(FileHandle&& other) noexcept
      : handle_(std::exchange(other.handle_, INVALID_HANDLE_VALUE)) {}
  FileHandle& operator=(FileHandle&&) = delete;
  FileHandle(const FileHandle&) = delete;
  FileHandle& operator=(const FileHandle&) = delete;
  ~FileHandle();

  bool IsOpen() const { return handle_ != INVALID_HANDLE_VALUE; }
  HANDLE Get() const { return handle_; }
  // False, with the last error set, where closing fails.
  bool Close();

 private:
  HANDLE handle_;
};

// The path as file calls take it, whatever its length: one that is long for the system becomes an
// absolute one with the prefix "\\?\". Raises FileAccessError for a path with a NUL inside.
std::wstring FilePath(const std::wstring& path);

// What GetLastError() reported for a path; a missing entry is PathNotFound.
RuntimeError FileErrorOf(DWORD error, const std::wstring& path);

// Writes all bytes. False with the last error set.
bool WriteAll(HANDLE file, std::string_view bytes);

// Raises FileNotFound, PathNotFound, PermissionDenied or FileAccessError.
std::string ReadWindowsFile(const std::wstring& path);
// Writes a new file beside the path and gives it the path's name. Raises PathNotFound,
// PermissionDenied, DiskFull or FileAccessError, leaving nothing behind.
void ReplaceWindowsFile(const std::wstring& path, std::string_view bytes);

}  // namespace pxscheduler
