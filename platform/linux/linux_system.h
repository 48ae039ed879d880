#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/code_page.h"
#include "platform/system.h"

namespace pxscheduler {

// The process as Linux runs it. Times are those of the local time zone; a file that it makes is
// readable by the owner's group at most, because it may name clients.
class LinuxSystem : public System {
 public:
  // `arguments` are the program's, its own name first. `ansi` gives the code page of appended text
  // when it is first needed.
  LinuxSystem(std::vector<std::string> arguments, std::function<const CodePage&()> ansi);

  Moment Now() const override;
  // USERPROFILE is HOME where it is not defined itself.
  std::wstring EnvironmentVariable(const std::wstring& name) const override;
  std::wstring CommandLine() const override;
  std::wstring ProgramFolder() const override;
  // $TMPDIR, else a folder below /tmp that is this user's alone, made where it is missing.
  std::wstring TemporaryFolder() const override;
  std::optional<int> OsMajorVersion() const override;

  // On standard error; waits for Enter where standard input is a terminal.
  void ShowMessageBox(const std::wstring& caption, const std::wstring& text) override;
  void Warn(const std::wstring& line) override;
  void ShowProgress(const RunProgress& progress) override;

  void HoldStopRequests() override;
  std::optional<int> StopStatus() const override;

  std::wstring ShownPath(const std::wstring& path) const override;
  std::wstring FirstEntry(const std::wstring& path) const override;
  void MakeFolder(const std::wstring& path) override;
  std::unique_ptr<AppendFile> OpenForAppend(const std::wstring& path) override;
  std::string ReadFile(const std::wstring& path) const override;
  bool IsReadableByAll(const std::wstring& path) const override;
  std::wstring RealPath(const std::wstring& path) const override;
  void ReplaceContent(const std::wstring& path, std::string_view bytes) override;
  std::unique_ptr<FolderLock> LockFolder(const std::wstring& path) override;

 private:
  void EndProgressLine();

  std::vector<std::string> arguments_;
  std::function<const CodePage&()> ansi_;
  bool is_watched_;  // standard error is a terminal
  bool progress_line_is_open_ = false;
  std::chrono::steady_clock::time_point next_drawing_;
};

// The value of an environment variable, "" where it is not defined.
std::string NativeEnvironmentVariable(const std::string& name);

}  // namespace pxscheduler
