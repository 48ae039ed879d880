#include "platform/windows/windows_files.h"

#include <algorithm>
#include <cstddef>

namespace pxscheduler {
namespace {

// A file that goes on and on (a device) ends the run instead of the machine.
constexpr std::size_t kMostBytes = std::size_t{1} << 30;
constexpr std::size_t kMostBytesOfOneCall = std::size_t{1} << 20;
// A path of a folder may have no more, so that a name of eight and three fits behind it.
constexpr std::size_t kLongestPlainPath = MAX_PATH - 13;
constexpr int kNamesTried = 100;

std::wstring FolderOf(const std::wstring& path) {
  const std::size_t end = path.find_last_of(L"\\/:");
  return end == std::wstring::npos ? L"." : path.substr(0, end + 1);
}

bool FolderExists(const std::wstring& path) {
  const DWORD attributes = ::GetFileAttributesW(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// A new file beside the path, whose name it sets.
FileHandle CreateBeside(const std::wstring& path, std::wstring& beside) {
  const std::wstring stem = path + L"." + std::to_wstring(::GetCurrentProcessId()) + L".";
  for (int i = 0; i < kNamesTried; ++i) {
    beside = stem + std::to_wstring(i);
    FileHandle file(::CreateFileW(beside.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                  FILE_ATTRIBUTE_NORMAL, nullptr));
    if (file.IsOpen() || ::GetLastError() != ERROR_FILE_EXISTS) return file;
  }
  return FileHandle(INVALID_HANDLE_VALUE);
}

}  // namespace

FileHandle::~FileHandle() {
  if (IsOpen()) ::CloseHandle(handle_);
}

bool FileHandle::Close() {
  return ::CloseHandle(std::exchange(handle_, INVALID_HANDLE_VALUE)) != 0;
}

std::wstring FilePath(const std::wstring& path) {
  // Windows would end the path there and use another file.
  if (path.find(L'\0') != std::wstring::npos) throw FileAccessError(path);
  if (path.size() < kLongestPlainPath || path.starts_with(L"\\\\?\\")) return path;
  const DWORD size = ::GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
  std::wstring full(size, L'\0');
  full.resize(::GetFullPathNameW(path.c_str(), size, full.data(), nullptr));
  if (full.empty()) return path;
  if (full.starts_with(L"\\\\")) return L"\\\\?\\UNC" + full.substr(1);
  return L"\\\\?\\" + full;
}

RuntimeError FileErrorOf(DWORD error, const std::wstring& path) {
  switch (error) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_DRIVE:
    case ERROR_BAD_NETPATH:
    case ERROR_BAD_NET_NAME:
    case ERROR_BAD_PATHNAME:
    case ERROR_DIRECTORY:
      return PathNotFound(path);
    case ERROR_ACCESS_DENIED:
    case ERROR_WRITE_PROTECT:
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
    case ERROR_NETWORK_ACCESS_DENIED:
      return PermissionDenied(path);
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
      return DiskFull(path);
    default:
      return FileAccessError(path);
  }
}

bool WriteAll(HANDLE file, std::string_view bytes) {
  while (!bytes.empty()) {
    DWORD written = 0;
    // One call takes what is appended to a log in one step.
    const DWORD size = static_cast<DWORD>(std::min(bytes.size(), kMostBytesOfOneCall));
    if (::WriteFile(file, bytes.data(), size, &written, nullptr) == 0) return false;
    // A pipe that does not wait takes nothing while it is full.
    if (written == 0) return false;
    bytes.remove_prefix(written);
  }
  return true;
}

std::string ReadWindowsFile(const std::wstring& path) {
  const std::wstring file_path = FilePath(path);
  const FileHandle file(::CreateFileW(file_path.c_str(), GENERIC_READ,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                      nullptr, OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
  if (!file.IsOpen()) {
    const DWORD error = ::GetLastError();
    if (error == ERROR_FILE_NOT_FOUND && FolderExists(FolderOf(file_path)))
      throw FileNotFound(path);
    throw FileErrorOf(error, path);
  }
  std::string bytes;
  while (true) {
    const std::size_t used = bytes.size();
    bytes.resize(used + kMostBytesOfOneCall);
    DWORD count = 0;
    if (::ReadFile(file.Get(), bytes.data() + used, static_cast<DWORD>(kMostBytesOfOneCall), &count,
                   nullptr) == 0)
      throw FileErrorOf(::GetLastError(), path);
    bytes.resize(used + count);
    if (count == 0) return bytes;
    if (bytes.size() > kMostBytes) throw OutOfMemory();
  }
}

void ReplaceWindowsFile(const std::wstring& path, std::string_view bytes) {
  const std::wstring file_path = FilePath(path);
  std::wstring beside;
  FileHandle file = CreateBeside(file_path, beside);
  if (!file.IsOpen()) throw FileErrorOf(::GetLastError(), path);
  if (WriteAll(file.Get(), bytes) && file.Close() &&
      ::MoveFileExW(beside.c_str(), file_path.c_str(), MOVEFILE_REPLACE_EXISTING) != 0)
    return;
  const DWORD error = ::GetLastError();
  if (file.IsOpen()) file.Close();
  ::DeleteFileW(beside.c_str());
  throw FileErrorOf(error, path);
}

}  // namespace pxscheduler
