#include "platform/linux/linux_system.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <filesystem>
#include <future>

#include "platform/linux/files.h"
#include "platform/linux/native_text.h"
#include "tests/support/fake_platform.h"
#include "tests/support/raised_by.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/scratch_folder.h"

namespace pxscheduler {
namespace {

using namespace std::chrono_literals;

class LinuxSystemTest : public testing::Test {
 protected:
  std::wstring Path(const std::string& name) const { return FromNativePath(folder_.Path(name)); }

  ScratchFolder folder_;
  Latin1CodePage latin1_;
  LinuxSystem system_{{"program"}, [this]() -> const CodePage& { return latin1_; }};
};

unsigned ModeOf(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 0777U : 0;
}

TEST_F(LinuxSystemTest, JoinsTheArguments) {
  const auto line = [this](std::vector<std::string> arguments) {
    return LinuxSystem(std::move(arguments), [this]() -> const CodePage& { return latin1_; })
        .CommandLine();
  };
  EXPECT_EQ(line({}), L"");
  EXPECT_EQ(line({"program"}), L"");
  EXPECT_EQ(line({"program", "/QMy Query", "", "/F\"x\"", "/S\xC3\xA9"}),
            L"/QMy Query  /F\"x\" /S\u00E9");
}

TEST_F(LinuxSystemTest, ReadsTheEnvironment) {
  const ScopedEnvironment home("HOME", "/home/jane");
  const ScopedEnvironment other("SCHEDULER_TEST", "a/\xC3\xA9");
  EXPECT_EQ(system_.EnvironmentVariable(L"SCHEDULER_TEST"), L"a/\u00E9");
  EXPECT_EQ(system_.EnvironmentVariable(L"SCHEDULER_NO_TEST"), L"");
  EXPECT_EQ(system_.EnvironmentVariable(L""), L"");
  {
    const ScopedEnvironment none("USERPROFILE", std::nullopt);
    EXPECT_EQ(system_.EnvironmentVariable(L"USERPROFILE"), L"\\home\\jane");
  }
  const ScopedEnvironment profile("USERPROFILE", "C:\\Users\\Jane");
  EXPECT_EQ(system_.EnvironmentVariable(L"USERPROFILE"), L"C:\\Users\\Jane");
}

TEST_F(LinuxSystemTest, KnowsItsFolders) {
  EXPECT_EQ(ToNativePath(system_.ProgramFolder()),
            std::filesystem::read_symlink("/proc/self/exe").parent_path().string());
  const std::string own = "/tmp/pxscheduler-" + std::to_string(::geteuid());
  const struct {
    std::optional<std::string> variable;
    std::string folder;
  } cases[] = {{std::nullopt, own + "/"}, {"", own + "/"}, {"/a/b", "/a/b/"}, {"/a/", "/a/"}};
  for (const auto& c : cases) {
    const ScopedEnvironment folder("TMPDIR", c.variable);
    EXPECT_EQ(system_.TemporaryFolder(), FromNativePath(c.folder));
  }
  EXPECT_EQ(ModeOf(own), 0700U);
}

TEST_F(LinuxSystemTest, UsesNoTemporaryFolderThatOthersCanEnter) {
  const ScopedEnvironment variable("TMPDIR", std::nullopt);
  const std::string own = ToNativePath(system_.TemporaryFolder());
  ASSERT_EQ(::chmod(own.c_str(), 0750), 0);
  EXPECT_EQ(RaisedBy([&] { system_.TemporaryFolder(); }).number, 70);
  ASSERT_EQ(::chmod(own.c_str(), 0700), 0);
}

TEST_F(LinuxSystemTest, LetsOneAtATimeLockAFolder) {
  std::unique_ptr<FolderLock> lock = system_.LockFolder(Path(""));
  std::future<std::unique_ptr<FolderLock>> other =
      std::async(std::launch::async, [&] { return system_.LockFolder(Path("")); });
  EXPECT_EQ(other.wait_for(50ms), std::future_status::timeout);
  lock.reset();
  EXPECT_NE(other.get(), nullptr);
  EXPECT_EQ(RaisedBy([&] { system_.LockFolder(Path("missing")); }).number, 76);
}

TEST_F(LinuxSystemTest, TellsTheLocalTime) {
  const ScopedEnvironment zone("TZ", "XXX+3:30");
  ::tzset();
  const auto before = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
  const Moment now = system_.Now();
  EXPECT_EQ(now.utc_offset, -210min);
  const std::chrono::sys_seconds utc = now.local.date + now.local.time_of_day - now.utc_offset;
  EXPECT_GE(utc, before - 1s);
  EXPECT_LE(utc, before + 10s);
  EXPECT_GE(now.local.time_of_day, 0s);
  EXPECT_LT(now.local.time_of_day, 24h);
}

TEST_F(LinuxSystemTest, FindsEntriesAndMakesFolders) {
  folder_.Write("file", "");
  EXPECT_EQ(system_.FirstEntry(Path("file")), L"file");
  EXPECT_EQ(system_.FirstEntry(Path("missing")), L"");
  EXPECT_EQ(system_.FirstEntry(Path("file\\below")), L"");
  EXPECT_EQ(system_.FirstEntry(L""), L"");
  EXPECT_NE(system_.FirstEntry(L"\\"), L"");

  system_.MakeFolder(Path("made"));
  EXPECT_EQ(system_.FirstEntry(Path("made")), L"made");
  EXPECT_EQ(ModeOf(folder_.Path("made")) & 07U, 0U);
  EXPECT_EQ(RaisedBy([&] { system_.MakeFolder(Path("made")); }).number, 75);
  EXPECT_EQ(RaisedBy([&] { system_.MakeFolder(Path("missing\\made")); }).number, 76);
  EXPECT_EQ(RaisedBy([&] { system_.MakeFolder(Path("file\\made")); }).number, 76);
  EXPECT_EQ(RaisedBy([&] { system_.MakeFolder(L""); }).number, 76);
  EXPECT_EQ(RaisedBy([&] { system_.MakeFolder(Path(std::string("a\0b", 3))); }).number, 75);
}

TEST_F(LinuxSystemTest, AppendsToFiles) {
  folder_.Write("old.log", "old\r\n");
  const auto first = system_.OpenForAppend(Path("old.log"));
  const auto second = system_.OpenForAppend(Path("old.log"));
  first->Append(L"\u00E9 \u20AC\r\n");
  second->Append(L"second\r\n");
  first->Append(L"third\r\n");
  EXPECT_EQ(folder_.Read("old.log"), "old\r\n\xE9 ?\r\nsecond\r\nthird\r\n");

  system_.OpenForAppend(Path("new.log"));
  EXPECT_EQ(ModeOf(folder_.Path("new.log")) & 07U, 0U);
  EXPECT_EQ(RaisedBy([&] { system_.OpenForAppend(Path("missing\\new.log")); }).number, 76);
  EXPECT_EQ(RaisedBy([&] { system_.OpenForAppend(Path("")); }).number, 75);
  const auto full = system_.OpenForAppend(L"\\dev\\full");
  EXPECT_EQ(RaisedBy([&] { full->Append(L"x"); }).number, 61);
}

TEST_F(LinuxSystemTest, ReadsFiles) {
  const std::string bytes = std::string(200'000, 'x') + '\0' + "\xFF";
  folder_.Write("file", bytes);
  EXPECT_EQ(system_.ReadFile(Path("file")), bytes);
  EXPECT_NE(system_.ReadFile(L"\\proc\\self\\status"), "");  // its size is told as 0
  EXPECT_EQ(RaisedBy([&] { system_.ReadFile(Path("missing")); }).number, 53);
  EXPECT_EQ(RaisedBy([&] { system_.ReadFile(Path("missing\\file")); }).number, 76);
  EXPECT_EQ(RaisedBy([&] { system_.ReadFile(Path("file\\file")); }).number, 76);
  EXPECT_EQ(RaisedBy([&] { system_.ReadFile(Path("")); }).number, 75);
}

TEST_F(LinuxSystemTest, ReplacesFiles) {
  folder_.Write("file", "old");
  std::filesystem::create_hard_link(folder_.Path("file"), folder_.Path("reader"));
  system_.ReplaceContent(Path("file"), "new");
  EXPECT_EQ(folder_.Read("file"), "new");
  EXPECT_EQ(folder_.Read("reader"), "old");  // whoever had opened it reads on in the old one
  EXPECT_EQ(ModeOf(folder_.Path("file")), 0600U);

  std::filesystem::create_directory(folder_.Path("taken"));
  EXPECT_EQ(RaisedBy([&] { system_.ReplaceContent(Path("taken"), "x"); }).number, 75);
  EXPECT_EQ(RaisedBy([&] { system_.ReplaceContent(Path("missing\\file"), "x"); }).number, 76);
  std::vector<std::string> left;
  for (const auto& entry : std::filesystem::directory_iterator(folder_.Path()))
    left.push_back(entry.path().filename());
  EXPECT_THAT(left, testing::UnorderedElementsAre("file", "reader", "taken"));
}

TEST_F(LinuxSystemTest, FollowsLinksToTheFileItself) {
  const std::wstring folder = system_.RealPath(FromNativePath(folder_.Path()));
  std::filesystem::create_directories(folder_.Path("inside/deeper"));
  folder_.Write("inside/file", "x");
  std::filesystem::create_symlink("file", folder_.Path("inside/link"));
  std::filesystem::create_directory_symlink("inside/deeper", folder_.Path("folder"));
  std::filesystem::create_symlink("loop", folder_.Path("loop"));
  for (const char* name :
       {"inside/file", "inside/link", "folder/../link", "inside/./deeper/../file"})
    EXPECT_EQ(system_.RealPath(Path(name)), folder + L"\\inside\\file") << name;
  EXPECT_EQ(system_.RealPath(Path("folder/")), folder + L"\\inside\\deeper");
  EXPECT_EQ(RaisedBy([&] { system_.RealPath(Path("missing")); }).number, 76);
  EXPECT_EQ(RaisedBy([&] { system_.RealPath(Path("loop")); }).number, 75);
  EXPECT_EQ(RaisedBy([&] { system_.RealPath(std::wstring(L".\0x", 3)); }).number, 75);
}

TEST(ErrorOf, KnowsWhatTheSystemMeans) {
  const struct {
    int error_number;
    int expected;
  } cases[] = {{ENOENT, 76}, {ENOTDIR, 76}, {EACCES, 70}, {EPERM, 70}, {EROFS, 70},
               {ENOSPC, 61}, {EDQUOT, 61},  {EFBIG, 61},  {EIO, 75},   {ENAMETOOLONG, 75}};
  for (const auto& c : cases)
    EXPECT_EQ(ErrorOf(c.error_number, "/a/b").number, c.expected) << c.error_number;
  EXPECT_EQ(ErrorOf(EACCES, "/a/b").description, L"Permission denied: /a/b");
}

TEST_F(LinuxSystemTest, ShowsAMessageWithoutWaitingWhereNobodySits) {
  testing::internal::CaptureStderr();
  system_.ShowMessageBox(L"Caption", L"text \x1B[2J \u00E9");
  system_.Warn(L"a warning");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "Caption\ntext ?[2J \xC3\xA9\na warning\n");
}

// At a terminal, the process stands still until somebody presses Enter.
TEST_F(LinuxSystemTest, WaitsForEnterAtATerminal) {
  const FileDescriptor terminal(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
  ASSERT_TRUE(terminal.IsOpen());
  ASSERT_EQ(::grantpt(terminal.Get()), 0);
  ASSERT_EQ(::unlockpt(terminal.Get()), 0);
  const FileDescriptor side(::open(::ptsname(terminal.Get()), O_RDWR | O_NOCTTY | O_CLOEXEC));
  ASSERT_TRUE(side.IsOpen());
  const pid_t child = ::fork();
  if (child == 0) {
    ::dup2(side.Get(), STDIN_FILENO);
    ::dup2(side.Get(), STDERR_FILENO);
    system_.ShowMessageBox(L"Caption", L"text");
    ::_exit(0);
  }
  ASSERT_GT(child, 0);
  ::usleep(100'000);
  int status = 0;
  EXPECT_EQ(::waitpid(child, &status, WNOHANG), 0) << "it did not wait";
  ASSERT_EQ(::write(terminal.Get(), "\n", 1), 1);
  EXPECT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status));
}

}  // namespace
}  // namespace pxscheduler
