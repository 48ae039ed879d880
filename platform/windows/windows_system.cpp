#include "platform/windows/windows_system.h"

#include <windows.h>

#include <atomic>
#include <utility>

#include "platform/runtime_error.h"
#include "platform/windows/windows_files.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

constexpr std::chrono::milliseconds kProgressInterval{100};
constexpr std::chrono::seconds kLongestWaitForLock{60};
constexpr DWORD kLockInterval = 10;    // in milliseconds
constexpr DWORD kLongestPath = 32768;  // of any path, the terminator included

class WindowsAppendFile : public AppendFile {
 public:
  WindowsAppendFile(FileHandle file, std::wstring path, const CodePage& ansi)
      : file_(std::move(file)), path_(std::move(path)), ansi_(ansi) {}

  void Append(std::wstring_view text) override {
    if (!WriteAll(file_.Get(), ansi_.ToBytes(text))) throw FileErrorOf(::GetLastError(), path_);
  }

 private:
  FileHandle file_;
  std::wstring path_;
  const CodePage& ansi_;
};

class WindowsFolderLock : public FolderLock {
 public:
  // The file that stands for the lock disappears with its handle.
  explicit WindowsFolderLock(FileHandle file) : file_(std::move(file)) {}

 private:
  FileHandle file_;
};

void ShowOnStandardError(std::wstring_view text) {
  const HANDLE error_output = ::GetStdHandle(STD_ERROR_HANDLE);
  if (error_output == nullptr || error_output == INVALID_HANDLE_VALUE) return;
  // Nobody is left to be told where this fails.
  static_cast<void>(WriteAll(error_output, ToUtf8(text)));
}

bool IsConsole(DWORD standard_handle) {
  DWORD mode = 0;
  return ::GetConsoleMode(::GetStdHandle(standard_handle), &mode) != 0;
}

std::chrono::sys_days DayOf(const SYSTEMTIME& time) {
  return std::chrono::year{time.wYear} / std::chrono::month{time.wMonth} /
         std::chrono::day{time.wDay};
}

std::chrono::seconds TimeOfDay(const SYSTEMTIME& time) {
  return std::chrono::hours{time.wHour} + std::chrono::minutes{time.wMinute} +
         std::chrono::seconds{time.wSecond};
}

// The exit statuses of a Unix shell for the same requests.
constexpr int kInterrupted = 130;
constexpr int kTerminated = 143;

// Of a program with a console; 0 while there is no request. The system calls the handler in a
// thread of its own and hands it nothing that could lead to an object.
std::atomic<int> status_asked_by_console{0};

BOOL WINAPI HandleConsoleEvent(DWORD event) {
  const bool is_interrupt = event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT;
  status_asked_by_console = is_interrupt ? kInterrupted : kTerminated;
  // When the handler returns from one of the others, the system ends the process; it grants some
  // seconds.
  if (!is_interrupt) ::Sleep(INFINITE);
  return TRUE;
}

std::wstring WithoutExtendedPrefix(std::wstring path) {
  if (path.starts_with(L"\\\\?\\UNC\\")) return L"\\" + path.substr(7);
  if (path.starts_with(L"\\\\?\\")) return path.substr(4);
  return path;
}

}  // namespace

std::wstring ArgumentsOf(std::wstring_view process_command_line) {
  std::size_t end = 0;
  if (process_command_line.starts_with(L'"')) {
    end = process_command_line.find(L'"', 1);
    if (end != std::wstring_view::npos) ++end;
  } else {
    end = process_command_line.find_first_of(L" \t");
  }
  if (end == std::wstring_view::npos) return L"";
  const std::size_t start = process_command_line.find_first_not_of(L" \t", end);
  return start == std::wstring_view::npos ? L"" : std::wstring{process_command_line.substr(start)};
}

WindowsSystem::WindowsSystem(std::function<const CodePage&()> ansi)
    : ansi_(std::move(ansi)), is_watched_(IsConsole(STD_ERROR_HANDLE)) {}

Moment WindowsSystem::Now() const {
  SYSTEMTIME utc{};
  SYSTEMTIME local{};
  ::GetSystemTime(&utc);
  if (::SystemTimeToTzSpecificLocalTime(nullptr, &utc, &local) == 0) local = utc;
  const auto local_time = DayOf(local) + TimeOfDay(local);
  const auto offset = local_time - (DayOf(utc) + TimeOfDay(utc));
  return {{DayOf(local), TimeOfDay(local)},
          std::chrono::duration_cast<std::chrono::minutes>(offset)};
}

std::wstring WindowsSystem::EnvironmentVariable(const std::wstring& name) const {
  DWORD size = ::GetEnvironmentVariableW(name.c_str(), nullptr, 0);
  std::wstring value;
  // Nothing else in this process changes the environment, so the size is right.
  if (size > 0) {
    value.resize(size);
    value.resize(::GetEnvironmentVariableW(name.c_str(), value.data(), size));
  }
  return value;
}

std::wstring WindowsSystem::CommandLine() const { return ArgumentsOf(::GetCommandLineW()); }

std::wstring WindowsSystem::ProgramFolder() const {
  std::wstring path(kLongestPath, L'\0');
  path.resize(::GetModuleFileNameW(nullptr, path.data(), kLongestPath));
  path = WithoutExtendedPrefix(std::move(path));
  const std::size_t end = path.find_last_of(L'\\');
  if (end == std::wstring::npos) return L".";
  const bool is_root = end > 0 && path[end - 1] == L':';
  return path.substr(0, is_root ? end + 1 : end);
}

std::wstring WindowsSystem::TemporaryFolder() const {
  std::wstring folder(MAX_PATH + 2, L'\0');
  folder.resize(::GetTempPathW(static_cast<DWORD>(folder.size()), folder.data()));
  if (!folder.ends_with(L'\\')) folder += L'\\';
  return folder;
}

std::optional<int> WindowsSystem::OsMajorVersion() const {
  OSVERSIONINFOA version{};
  version.dwOSVersionInfoSize = sizeof version;
  if (::GetVersionExA(&version) == 0) return std::nullopt;
  return static_cast<int>(version.dwMajorVersion);
}

void WindowsSystem::ShowMessageBox(const std::wstring& caption, const std::wstring& text) {
  EndProgressLine();
  ::SetConsoleCtrlHandler(HandleConsoleEvent, FALSE);
  stop_window_.reset();
  // The last thing that a run does is to be seen, though the program has no window to stand before.
  ::MessageBoxW(nullptr, text.c_str(), caption.c_str(),
                MB_OK | MB_ICONEXCLAMATION | MB_TASKMODAL | MB_SETFOREGROUND);
}

void WindowsSystem::Warn(const std::wstring& line) {
  EndProgressLine();
  ShowOnStandardError(line + L"\r\n");
}

void WindowsSystem::ShowProgress(const RunProgress& progress) {
  if (!is_watched_) return;
  const bool is_done = progress.rows_done == progress.rows;
  const auto now = std::chrono::steady_clock::now();
  if (now < next_drawing_ && !is_done) return;
  next_drawing_ = now + kProgressInterval;
  ShowOnStandardError(ProgressLine(progress));
  progress_line_is_open_ = true;
  if (is_done) EndProgressLine();
}

void WindowsSystem::EndProgressLine() {
  if (progress_line_is_open_) ShowOnStandardError(L"\r\n");
  progress_line_is_open_ = false;
}

void WindowsSystem::HoldStopRequests() {
  ::SetConsoleCtrlHandler(HandleConsoleEvent, TRUE);
  if (stop_window_ == nullptr) stop_window_ = std::make_unique<StopWindow>();
}

std::optional<int> WindowsSystem::StopStatus() const {
  if (const int status = status_asked_by_console; status != 0) return status;
  if (stop_window_ != nullptr && stop_window_->IsStopRequested()) return kTerminated;
  return std::nullopt;
}

std::wstring WindowsSystem::ShownPath(const std::wstring& path) const { return path; }

std::wstring WindowsSystem::FirstEntry(const std::wstring& path) const {
  if (path.empty()) return L"";
  WIN32_FIND_DATAW found{};
  const HANDLE search = ::FindFirstFileW(FilePath(path).c_str(), &found);
  if (search != INVALID_HANDLE_VALUE) {
    ::FindClose(search);
    return found.cFileName;
  }
  const DWORD error = ::GetLastError();
  if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) return L"";
  throw FileErrorOf(error, path);
}

void WindowsSystem::MakeFolder(const std::wstring& path) {
  if (::CreateDirectoryW(FilePath(path).c_str(), nullptr) == 0)
    throw FileErrorOf(::GetLastError(), path);
}

std::unique_ptr<AppendFile> WindowsSystem::OpenForAppend(const std::wstring& path) {
  // FILE_APPEND_DATA alone: the system puts every write behind the last byte, whoever wrote that.
  FileHandle file(::CreateFileW(FilePath(path).c_str(), FILE_APPEND_DATA,
                                FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS,
                                FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file.IsOpen()) throw FileErrorOf(::GetLastError(), path);
  return std::make_unique<WindowsAppendFile>(std::move(file), path, ansi_());
}

std::string WindowsSystem::ReadFile(const std::wstring& path) const {
  return ReadWindowsFile(path);
}

std::wstring WindowsSystem::RealPath(const std::wstring& path) const {
  // Backup semantics, so that a folder can be opened as well.
  const FileHandle file(::CreateFileW(FilePath(path).c_str(), FILE_READ_ATTRIBUTES,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                      nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  if (!file.IsOpen()) throw FileErrorOf(::GetLastError(), path);
  std::wstring real(kLongestPath, L'\0');
  real.resize(::GetFinalPathNameByHandleW(file.Get(), real.data(), kLongestPath, VOLUME_NAME_DOS));
  if (real.empty()) throw FileErrorOf(::GetLastError(), path);
  return WithoutExtendedPrefix(std::move(real));
}

void WindowsSystem::ReplaceContent(const std::wstring& path, std::string_view bytes) {
  ReplaceWindowsFile(path, bytes);
}

std::unique_ptr<FolderLock> WindowsSystem::LockFolder(const std::wstring& path) {
  const std::wstring lock_path =
      FilePath(path + (path.ends_with(L'\\') ? L"" : L"\\") + L"PXScheduler.lock");
  const auto deadline = std::chrono::steady_clock::now() + kLongestWaitForLock;
  while (true) {
    FileHandle file(::CreateFileW(lock_path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                  FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr));
    if (file.IsOpen()) return std::make_unique<WindowsFolderLock>(std::move(file));
    const DWORD error = ::GetLastError();
    // Access is denied for a moment while the last holder's file disappears.
    const bool is_held = error == ERROR_SHARING_VIOLATION || error == ERROR_ACCESS_DENIED;
    if (!is_held || std::chrono::steady_clock::now() >= deadline) throw FileErrorOf(error, path);
    ::Sleep(kLockInterval);
  }
}

}  // namespace pxscheduler
