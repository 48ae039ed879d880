#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/code_page.h"
#include "platform/system.h"
#include "platform/windows/stop_window.h"

namespace pxscheduler {

// The process as Windows runs it. Times are those of the local time zone.
class WindowsSystem : public System {
 public:
  // `ansi` gives the code page of appended text when it is first needed.
  explicit WindowsSystem(std::function<const CodePage&()> ansi);

  Moment Now() const override;
  std::wstring EnvironmentVariable(const std::wstring& name) const override;
  std::wstring CommandLine() const override;
  std::wstring ProgramFolder() const override;
  std::wstring TemporaryFolder() const override;
  std::optional<int> OsMajorVersion() const override;

  void ShowMessageBox(const std::wstring& caption, const std::wstring& text) override;
  // On standard error in UTF-8, where whoever started the program took it up.
  void Warn(const std::wstring& line) override;
  void ShowProgress(const RunProgress& progress) override;

  void HoldStopRequests() override;
  std::optional<int> StopStatus() const override;

  std::wstring ShownPath(const std::wstring& path) const override;
  std::wstring FirstEntry(const std::wstring& path) const override;
  void MakeFolder(const std::wstring& path) override;
  std::unique_ptr<AppendFile> OpenForAppend(const std::wstring& path) override;
  std::string ReadFile(const std::wstring& path) const override;
  // Always false: access is by lists that the settings, which are no files here, have of their own.
  bool IsReadableByAll(const std::wstring& /*path*/) const override { return false; }
  std::wstring RealPath(const std::wstring& path) const override;
  void ReplaceContent(const std::wstring& path, std::string_view bytes) override;
  std::unique_ptr<FolderLock> LockFolder(const std::wstring& path) override;

 private:
  void EndProgressLine();

  std::function<const CodePage&()> ansi_;
  std::unique_ptr<StopWindow> stop_window_;
  bool is_watched_;  // standard error is a console
  bool progress_line_is_open_ = false;
  std::chrono::steady_clock::time_point next_drawing_;
};

// What follows the name of the executable in the command line of a process, blanks before it left
// out. The name ends at its closing quotation mark, or at the first blank where it has none.
std::wstring ArgumentsOf(std::wstring_view process_command_line);

}  // namespace pxscheduler
