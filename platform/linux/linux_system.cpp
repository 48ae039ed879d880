#include "platform/linux/linux_system.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <ctime>
#include <thread>
#include <utility>

#include "platform/linux/files.h"
#include "platform/linux/native_text.h"
#include "platform/runtime_error.h"

namespace pxscheduler {
namespace {

constexpr std::chrono::milliseconds kProgressInterval{100};

constexpr std::array kStopSignals{SIGTERM, SIGINT, SIGHUP};
constexpr int kEndedBySignal = 128;  // what a shell adds to the signal's number

constexpr mode_t kFolderMode = 0750;
constexpr mode_t kFileMode = 0640;
constexpr mode_t kTemporaryFolderMode = 0700;
constexpr mode_t kOfOthers = 077;  // what the group and everybody else may do

constexpr std::chrono::seconds kLongestWaitForLock{60};
constexpr std::chrono::milliseconds kLockInterval{10};

class LinuxAppendFile : public AppendFile {
 public:
  LinuxAppendFile(FileDescriptor file, std::string path, const CodePage& ansi)
      : file_(std::move(file)), path_(std::move(path)), ansi_(ansi) {}

  void Append(std::wstring_view text) override {
    if (!WriteAll(file_.Get(), ansi_.ToBytes(text))) throw ErrorOf(errno, path_);
  }

 private:
  FileDescriptor file_;
  std::string path_;
  const CodePage& ansi_;
};

class LinuxFolderLock : public FolderLock {
 public:
  // The lock ends with the descriptor.
  explicit LinuxFolderLock(FileDescriptor folder) : folder_(std::move(folder)) {}

 private:
  FileDescriptor folder_;
};

// Anybody may have put something else there before, where /tmp is shared.
std::string MakeOwnTemporaryFolder() {
  std::string path = "/tmp/pxscheduler-" + std::to_string(::geteuid());
  if (::mkdir(path.c_str(), kTemporaryFolderMode) != 0 && errno != EEXIST)
    throw ErrorOf(errno, path);
  struct stat status {};
  if (::lstat(path.c_str(), &status) != 0) throw ErrorOf(errno, path);
  if (!S_ISDIR(status.st_mode) || status.st_uid != ::geteuid() || (status.st_mode & kOfOthers) != 0)
    throw ErrorOf(EACCES, path);
  return path;
}

// Text on a terminal must not command it.
std::string ForTerminal(std::wstring_view text) {
  std::wstring shown(text);
  for (wchar_t& c : shown) {
    const bool control = (c < 0x20 && c != L'\n' && c != L'\t') || (c >= 0x7F && c < 0xA0);
    if (control) c = L'?';
  }
  return ToNative(shown);
}

void ShowOnStandardError(std::wstring_view text) {
  // Nobody is left to be told where this fails.
  static_cast<void>(WriteAll(STDERR_FILENO, ForTerminal(text)));
}

// `how` is SIG_BLOCK or SIG_UNBLOCK. Threads that are made later inherit it.
void MaskStopSignals(int how) {
  sigset_t signals;
  ::sigemptyset(&signals);
  for (const int signal : kStopSignals) ::sigaddset(&signals, signal);
  ::pthread_sigmask(how, &signals, nullptr);
}

void WaitForEnter() {
  char character = 0;
  while (true) {
    const ssize_t count = ::read(STDIN_FILENO, &character, 1);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0 || character == '\n') return;
  }
}

std::string CheckedPath(const std::wstring& path) {
  std::string native = ToNativePath(path);
  // C functions would end the path there and use another file.
  if (native.find('\0') != std::string::npos) throw FileAccessError(FromNative(native));
  return native;
}

}  // namespace

std::string NativeEnvironmentVariable(const std::string& name) {
  if (name.empty() || name.find('\0') != std::string::npos) return "";
  const char* value = std::getenv(name.c_str());  // NOLINT(concurrency-mt-unsafe): one thread
  return value == nullptr ? "" : value;
}

LinuxSystem::LinuxSystem(std::vector<std::string> arguments, std::function<const CodePage&()> ansi)
    : arguments_(std::move(arguments)),
      ansi_(std::move(ansi)),
      is_watched_(::isatty(STDERR_FILENO) != 0) {}

Moment LinuxSystem::Now() const {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  ::localtime_r(&now, &local);
  const std::chrono::sys_seconds shown{std::chrono::seconds{now + local.tm_gmtoff}};
  const auto day = std::chrono::floor<std::chrono::days>(shown);
  return {{day, shown - day},
          std::chrono::duration_cast<std::chrono::minutes>(std::chrono::seconds{local.tm_gmtoff})};
}

std::wstring LinuxSystem::EnvironmentVariable(const std::wstring& name) const {
  const std::string value = NativeEnvironmentVariable(ToNative(name));
  if (value.empty() && name == L"USERPROFILE")
    return FromNativePath(NativeEnvironmentVariable("HOME"));
  return FromNative(value);
}

std::wstring LinuxSystem::CommandLine() const {
  std::wstring line;
  for (std::size_t i = 1; i < arguments_.size(); ++i) {
    if (i > 1) line += L' ';
    line += FromNative(arguments_[i]);
  }
  return line;
}

std::wstring LinuxSystem::ProgramFolder() const {
  std::array<char, PATH_MAX> buffer;
  const ssize_t length = ::readlink("/proc/self/exe", buffer.data(), buffer.size());
  std::string path;
  if (length > 0)
    path.assign(buffer.data(), static_cast<std::size_t>(length));
  else if (!arguments_.empty())
    path = arguments_[0];
  const std::size_t end = path.find_last_of('/');
  if (end == std::string::npos) return L".";
  return FromNativePath(end == 0 ? "/" : path.substr(0, end));
}

std::wstring LinuxSystem::TemporaryFolder() const {
  std::string folder = NativeEnvironmentVariable("TMPDIR");
  if (folder.empty()) folder = MakeOwnTemporaryFolder();
  if (folder.back() != '/') folder += '/';
  return FromNativePath(folder);
}

std::optional<int> LinuxSystem::OsMajorVersion() const { return 6; }

void LinuxSystem::ShowMessageBox(const std::wstring& caption, const std::wstring& text) {
  EndProgressLine();
  ShowOnStandardError(caption + L"\n" + text + L"\n");
  if (::isatty(STDIN_FILENO) == 0) return;
  ShowOnStandardError(L"Press Enter to go on.\n");
  MaskStopSignals(SIG_UNBLOCK);
  WaitForEnter();
}

void LinuxSystem::Warn(const std::wstring& line) {
  EndProgressLine();
  ShowOnStandardError(line + L"\n");
}

void LinuxSystem::ShowProgress(const RunProgress& progress) {
  if (!is_watched_) return;
  const bool is_done = progress.rows_done == progress.rows;
  const auto now = std::chrono::steady_clock::now();
  if (now < next_drawing_ && !is_done) return;
  next_drawing_ = now + kProgressInterval;
  static_cast<void>(WriteAll(STDERR_FILENO, ToNative(ProgressLine(progress))));
  progress_line_is_open_ = true;
  if (is_done) EndProgressLine();
}

void LinuxSystem::EndProgressLine() {
  if (progress_line_is_open_) ShowOnStandardError(L"\n");
  progress_line_is_open_ = false;
}

void LinuxSystem::HoldStopRequests() { MaskStopSignals(SIG_BLOCK); }

std::optional<int> LinuxSystem::StopStatus() const {
  sigset_t pending;
  if (::sigpending(&pending) != 0) return std::nullopt;
  for (const int signal : kStopSignals)
    if (::sigismember(&pending, signal) == 1) return kEndedBySignal + signal;
  return std::nullopt;
}

std::wstring LinuxSystem::ShownPath(const std::wstring& path) const {
  return FromNative(ToNativePath(path));
}

std::wstring LinuxSystem::FirstEntry(const std::wstring& path) const {
  if (path.empty()) return L"";
  const std::string native = CheckedPath(path);
  struct stat status {};
  if (::lstat(native.c_str(), &status) != 0) {
    if (errno == ENOENT || errno == ENOTDIR) return L"";
    throw ErrorOf(errno, native);
  }
  const std::size_t separator = native.find_last_of('/');
  const std::string name = separator == std::string::npos ? native : native.substr(separator + 1);
  return name.empty() ? L"." : FromNative(name);
}

void LinuxSystem::MakeFolder(const std::wstring& path) {
  const std::string native = CheckedPath(path);
  if (::mkdir(native.c_str(), kFolderMode) != 0) throw ErrorOf(errno, native);
}

std::unique_ptr<AppendFile> LinuxSystem::OpenForAppend(const std::wstring& path) {
  const std::string native = CheckedPath(path);
  FileDescriptor file(
      ::open(native.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY, kFileMode));
  if (!file.IsOpen()) throw ErrorOf(errno, native);
  return std::make_unique<LinuxAppendFile>(std::move(file), native, ansi_());
}

std::string LinuxSystem::ReadFile(const std::wstring& path) const {
  return ReadNativeFile(CheckedPath(path));
}

bool LinuxSystem::IsReadableByAll(const std::wstring& path) const {
  struct stat status {};
  return ::stat(CheckedPath(path).c_str(), &status) == 0 && (status.st_mode & S_IROTH) != 0;
}

std::wstring LinuxSystem::RealPath(const std::wstring& path) const {
  const std::string native = CheckedPath(path);
  std::array<char, PATH_MAX> real;
  if (::realpath(native.c_str(), real.data()) == nullptr) throw ErrorOf(errno, native);
  return FromNativePath(real.data());
}

void LinuxSystem::ReplaceContent(const std::wstring& path, std::string_view bytes) {
  ReplaceNativeFile(CheckedPath(path), bytes);
}

std::unique_ptr<FolderLock> LinuxSystem::LockFolder(const std::wstring& path) {
  const std::string native = CheckedPath(path);
  FileDescriptor folder(::open(native.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder.IsOpen()) throw ErrorOf(errno, native);
  const auto deadline = std::chrono::steady_clock::now() + kLongestWaitForLock;
  while (::flock(folder.Get(), LOCK_EX | LOCK_NB) != 0) {
    if (errno != EINTR && errno != EWOULDBLOCK) throw ErrorOf(errno, native);
    if (std::chrono::steady_clock::now() >= deadline) throw ErrorOf(EACCES, native);
    std::this_thread::sleep_for(kLockInterval);
  }
  return std::make_unique<LinuxFolderLock>(std::move(folder));
}

}  // namespace pxscheduler
