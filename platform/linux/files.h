#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/runtime_error.h"

namespace pxscheduler {

// A file descriptor that is closed with its owner.
class FileDescriptor {
 public:
  explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
  FileDescriptor(FileDescriptor&& other) noexcept
      : descriptor_(std::exchange(other.descriptor_, -1)) {}
  FileDescriptor& operator=(FileDescriptor&&) = delete;
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  ~FileDescriptor();

  bool IsOpen() const { return descriptor_ >= 0; }
  int Get() const { return descriptor_; }
  // False, with errno set, where closing shows that something could not be written.
  bool Close();

 private:
  int descriptor_;
};

// The error that errno means for a path. A missing entry is PathNotFound.
RuntimeError ErrorOf(int error_number, std::string_view native_path);

// Writes all bytes, going on after an interruption or a partial write. False with errno set.
bool WriteAll(int descriptor, std::string_view bytes);

// All functions take paths of the operating system.

// Raises FileNotFound, PathNotFound, PermissionDenied or FileAccessError.
std::string ReadNativeFile(const std::string& path);
// Nothing for a file that does not exist; raises the same otherwise.
std::optional<std::string> ReadNativeFileIfAny(const std::string& path);
// Writes a new file beside the path, which only its owner may read, and gives it the path's name.
// Raises PathNotFound, PermissionDenied, DiskFull or FileAccessError, leaving nothing behind.
void ReplaceNativeFile(const std::string& path, std::string_view bytes);

}  // namespace pxscheduler
