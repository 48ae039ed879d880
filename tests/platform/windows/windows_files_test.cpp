#include "platform/windows/windows_files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>

#include "platform/code_page.h"
#include "platform/windows/windows_code_page.h"
#include "platform/windows/windows_system.h"
#include "tests/support/raised_by.h"
#include "tests/support/scratch_folder.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

class WindowsFilesTest : public testing::Test {
 protected:
  std::wstring Path(const std::string& name) const {
    std::wstring path = FromUtf8(folder_.Path(name));
    std::ranges::replace(path, L'/', L'\\');
    return path;
  }

  ScratchFolder folder_;
  WindowsCodePages code_pages_;
  WindowsSystem system_{[this]() -> const CodePage& { return code_pages_.Ansi(); }};
};

TEST_F(WindowsFilesTest, AppendsBehindWhatAnotherRunHasWritten) {
  const std::wstring path = Path("run.log");
  const auto first = system_.OpenForAppend(path);
  const auto second = system_.OpenForAppend(path);
  first->Append(L"one\r\n");
  second->Append(L"caf\u00E9\r\n");
  first->Append(L"three\r\n");
  EXPECT_EQ(folder_.Read("run.log"), "one\r\ncaf\xE9\r\nthree\r\n");
}

TEST_F(WindowsFilesTest, ReplacesTheWholeContent) {
  system_.ReplaceContent(Path("scheduler.htm"), "a longer first content");
  system_.ReplaceContent(Path("scheduler.htm"), "second");
  EXPECT_EQ(system_.ReadFile(Path("scheduler.htm")), "second");
  const std::filesystem::directory_iterator entries(Path(""));
  EXPECT_EQ(std::distance(begin(entries), end(entries)), 1) << "left behind";
}

TEST_F(WindowsFilesTest, FindsAndMakesFolders) {
  EXPECT_EQ(system_.FirstEntry(Path("Data")), L"");
  system_.MakeFolder(Path("Data"));
  EXPECT_EQ(system_.FirstEntry(Path("Data")), L"Data");
  EXPECT_EQ(RaisedBy([&] { system_.MakeFolder(Path("Data")); }).number, 75);
  EXPECT_EQ(RaisedBy([&] { system_.MakeFolder(Path("none\\below")); }).number, 76);
}

TEST_F(WindowsFilesTest, RaisesWhatThePlatformRaises) {
  system_.MakeFolder(Path("folder"));
  EXPECT_EQ(RaisedBy([&] { system_.ReadFile(Path("none.htm")); }).number, 53);
  EXPECT_EQ(RaisedBy([&] { system_.ReadFile(Path("none\\none.htm")); }).number, 76);
  EXPECT_EQ(RaisedBy([&] { system_.ReadFile(Path("folder")); }).number, 70);
  EXPECT_EQ(RaisedBy([&] { system_.OpenForAppend(Path("none\\run.log")); }).number, 76);
  EXPECT_EQ(RaisedBy([&] { system_.ReplaceContent(Path("none\\x.htm"), ""); }).number, 76);
  EXPECT_EQ(RaisedBy([&] { system_.ReadFile(Path("x") + std::wstring(1, L'\0')); }).number, 75);
}

// Every call that takes a path must get along with one above the system's old limit. Not asked for
// its real path here: Wine's GetFinalPathNameByHandle ends at that limit.
TEST_F(WindowsFilesTest, TakesLongPaths) {
  std::wstring path = Path("");
  for (int i = 0; i < 6; ++i) {
    path += std::wstring(60, L'a') + L"\\";
    system_.MakeFolder(path.substr(0, path.size() - 1));
  }
  const std::wstring file = path + L"letter.htm";
  system_.ReplaceContent(file, "content");
  EXPECT_EQ(system_.ReadFile(file), "content");
  EXPECT_EQ(system_.FirstEntry(file), L"letter.htm");
  system_.OpenForAppend(file)->Append(L"!");
  EXPECT_EQ(system_.ReadFile(file), "content!");
}

TEST_F(WindowsFilesTest, KnowsOneFileByItsRealPath) {
  folder_.Write("logo.png", "x");
  const std::wstring folder = system_.RealPath(Path(""));
  const std::wstring roundabout =
      folder + L"\\..\\" + folder.substr(folder.find_last_of(L'\\') + 1) + L"\\logo.png";
  EXPECT_EQ(system_.RealPath(Path("logo.png")), system_.RealPath(roundabout));
  EXPECT_EQ(RaisedBy([&] { system_.RealPath(Path("none.png")); }).number, 76);
}

}  // namespace
}  // namespace pxscheduler
