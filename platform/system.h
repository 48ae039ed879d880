#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/civil_time.h"

namespace pxscheduler {

// The clock's reading: the local date and time, and how far it is ahead of UTC.
struct Moment {
  DateTime local;
  std::chrono::minutes utc_offset{0};
};

// How far a run has come through the rows of its query.
struct RunProgress {
  std::size_t sent = 0;
  std::size_t failed = 0;
  std::size_t rows_done = 0;  // sent, failed or skipped
  std::size_t rows = 0;
};

// The line that shows it: a carriage return, so that it is drawn over the last one, which is never
// longer, and the counts.
std::wstring ProgressLine(const RunProgress& progress);

// A text file open for appending.
class AppendFile {
 public:
  virtual ~AppendFile() = default;

  // Writes the text after the last byte of the file, in the ANSI code page, in one write that
  // reaches the operating system before the call returns. Raises DiskFull, PermissionDenied or
  // FileAccessError.
  virtual void Append(std::wstring_view text) = 0;
};

// Keeps everybody else who locks the same folder waiting as long as it lives.
class FolderLock {
 public:
  virtual ~FolderLock() = default;
};

// The process and the machine around it. Paths are separated by "\".
class System {
 public:
  virtual ~System() = default;

  virtual Moment Now() const = 0;
  // "" for a variable that is not defined.
  virtual std::wstring EnvironmentVariable(const std::wstring& name) const = 0;
  // What follows the name of the executable, exactly as the platform passes it.
  virtual std::wstring CommandLine() const = 0;
  // The folder that holds the executable, without a trailing "\" except at a root.
  virtual std::wstring ProgramFolder() const = 0;
  // Ends in "\". Raises PermissionDenied, PathNotFound, DiskFull or FileAccessError where there can
  // be none that is this user's alone.
  virtual std::wstring TemporaryFolder() const = 0;
  // As reported to an old program. Nothing when the system does not answer.
  virtual std::optional<int> OsMajorVersion() const = 0;

  // Shows the text with an OK button and waits until it is dismissed.
  virtual void ShowMessageBox(const std::wstring& caption, const std::wstring& text) = 0;
  // One line for whoever started the run by hand; it never fails.
  virtual void Warn(const std::wstring& line) = 0;
  // Keeps one line of counts up to date for somebody who watches the run on a terminal: drawn at
  // most ten times a second, and once more when all rows are done. Nothing where nobody watches.
  virtual void ShowProgress(const RunProgress& progress) = 0;

  // From here on a request to stop (SIGTERM, SIGINT, SIGHUP; on Windows Ctrl-C, Ctrl-Break, the
  // closing of the console, the end of the session) no longer ends the process but is told by
  // StopStatus.
  virtual void HoldStopRequests() = 0;
  // The exit status that a request to stop asks for: 128 and the number of the signal (143 for
  // SIGTERM, 130 for SIGINT). Nothing where there was none since HoldStopRequests.
  virtual std::optional<int> StopStatus() const = 0;

  // The path as an operator writes it on this machine.
  virtual std::wstring ShownPath(const std::wstring& path) const = 0;
  // The name of the first file or folder that fits the path, "" where there is none. May raise a
  // RuntimeError where the path cannot be examined.
  virtual std::wstring FirstEntry(const std::wstring& path) const = 0;
  // Raises PathNotFound, PermissionDenied or FileAccessError (also where the path exists).
  virtual void MakeFolder(const std::wstring& path) = 0;
  // Created when missing. Raises PathNotFound, PermissionDenied or FileAccessError.
  virtual std::unique_ptr<AppendFile> OpenForAppend(const std::wstring& path) = 0;
  // The bytes of a file. Raises FileNotFound, PathNotFound, PermissionDenied or FileAccessError.
  virtual std::string ReadFile(const std::wstring& path) const = 0;
  // Whether every user of the machine may read the file. False where that cannot be told.
  virtual bool IsReadableByAll(const std::wstring& path) const = 0;
  // The same file or folder by an absolute path without links, "." and "..", so that two paths name
  // one file where they are equal. Raises PathNotFound, PermissionDenied or FileAccessError.
  virtual std::wstring RealPath(const std::wstring& path) const = 0;
  // Makes these bytes the whole content of the file in one step: a reader sees the old content or
  // the new. Raises PathNotFound, PermissionDenied, DiskFull or FileAccessError.
  virtual void ReplaceContent(const std::wstring& path, std::string_view bytes) = 0;
  // Waits until no other process and no other caller holds the folder, a minute at most. Raises
  // PermissionDenied where that is not enough, PathNotFound, PermissionDenied or FileAccessError
  // where the folder cannot be used.
  virtual std::unique_ptr<FolderLock> LockFolder(const std::wstring& path) = 0;
};

}  // namespace pxscheduler
