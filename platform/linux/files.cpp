#include "platform/linux/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "platform/linux/native_text.h"

namespace pxscheduler {
namespace {

// A file that goes on and on (a device) ends the run instead of the machine.
constexpr std::size_t kMostBytes = std::size_t{1} << 30;

std::string FolderOf(const std::string& path) {
  const std::size_t end = path.find_last_of('/');
  if (end == std::string::npos) return ".";
  return end == 0 ? "/" : path.substr(0, end);
}

bool IsMissing(int error_number) { return error_number == ENOENT || error_number == ENOTDIR; }

bool FolderExists(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

// C functions would end a path at its first NUL and use another file.
void RequireNoNul(const std::string& path) {
  if (path.find('\0') != std::string::npos) throw FileAccessError(FromNative(path));
}

std::string ReadToEnd(int descriptor, const std::string& path) {
  struct stat status {};
  std::string bytes;
  if (::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) &&
      static_cast<std::size_t>(status.st_size) <= kMostBytes)
    bytes.reserve(static_cast<std::size_t>(status.st_size));
  std::array<char, 65536> buffer;
  while (true) {
    const ssize_t count = ::read(descriptor, buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw ErrorOf(errno, path);
    if (count == 0) return bytes;
    if (bytes.size() + static_cast<std::size_t>(count) > kMostBytes) throw OutOfMemory();
    bytes.append(buffer.data(), static_cast<std::size_t>(count));
  }
}

}  // namespace

FileDescriptor::~FileDescriptor() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

bool FileDescriptor::Close() { return ::close(std::exchange(descriptor_, -1)) == 0; }

RuntimeError ErrorOf(int error_number, std::string_view native_path) {
  const std::wstring path = FromNative(native_path);
  switch (error_number) {
    case ENOENT:
    case ENOTDIR:
      return PathNotFound(path);
    case EACCES:
    case EPERM:
    case EROFS:
      return PermissionDenied(path);
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return DiskFull(path);
    default:
      return FileAccessError(path);
  }
}

bool WriteAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

std::optional<std::string> ReadNativeFileIfAny(const std::string& path) {
  RequireNoNul(path);
  const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
  if (!file.IsOpen()) {
    if (IsMissing(errno)) return std::nullopt;
    throw ErrorOf(errno, path);
  }
  return ReadToEnd(file.Get(), path);
}

std::string ReadNativeFile(const std::string& path) {
  std::optional<std::string> bytes = ReadNativeFileIfAny(path);
  if (bytes) return *std::move(bytes);
  if (FolderExists(FolderOf(path))) throw FileNotFound(FromNative(path));
  throw PathNotFound(FromNative(path));
}

void ReplaceNativeFile(const std::string& path, std::string_view bytes) {
  RequireNoNul(path);
  std::string beside = path + ".XXXXXX";
  FileDescriptor file(::mkostemp(beside.data(), O_CLOEXEC));
  if (!file.IsOpen()) throw ErrorOf(errno, path);
  if (WriteAll(file.Get(), bytes) && file.Close() && ::rename(beside.c_str(), path.c_str()) == 0)
    return;
  const int error_number = errno;
  ::unlink(beside.c_str());
  throw ErrorOf(error_number, path);
}

}  // namespace pxscheduler
