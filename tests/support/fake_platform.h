#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/code_page.h"
#include "platform/dates/picture_regional.h"
#include "platform/passwords.h"
#include "platform/registry.h"
#include "platform/runtime_error.h"
#include "platform/system.h"

namespace pxscheduler {

class FakeRegistry : public Registry {
 public:
  void Set(RegistryRoot root, std::wstring_view key, std::wstring_view name, std::wstring value);

  std::optional<std::wstring> Value(RegistryRoot root, std::wstring_view key,
                                    std::wstring_view name) const override;

 private:
  std::map<std::wstring, std::wstring> values_;
};

// A machine in memory. The test sets what it holds, reads what was done to it, and names the errors
// that it raises. File and folder names compare with case.
class FakeSystem : public System {
 public:
  struct MessageBox {
    std::wstring caption;
    std::wstring text;

    friend bool operator==(const MessageBox&, const MessageBox&) = default;
  };

  Moment moment{{std::chrono::year{2026} / 11 / 16, std::chrono::hours{15}}, {}};
  std::map<std::wstring, std::wstring> environment;
  std::wstring command_line;
  std::wstring program_folder = L"C:\\Program";
  std::wstring temporary_folder = L"C:\\Temp\\";
  std::optional<int> os_major_version = 6;
  std::map<std::wstring, std::string> files;
  std::set<std::wstring> folders = {L"C:", L"C:\\Program", L"C:\\Temp"};
  std::map<std::wstring, std::wstring> links;  // what RealPath makes of a path, where another one

  // What was done.
  std::vector<MessageBox> message_boxes;
  std::vector<std::wstring> warnings;
  std::vector<std::wstring> made_folders;
  std::map<std::wstring, std::wstring> appended;  // by path; `files` gets it too, in Latin-1

  // Raised instead of doing anything, by path.
  std::map<std::wstring, RuntimeError> first_entry_errors;
  std::map<std::wstring, RuntimeError> make_folder_errors;
  std::map<std::wstring, RuntimeError> open_errors;
  std::map<std::wstring, RuntimeError> append_errors;
  std::map<std::wstring, RuntimeError> read_errors;
  std::map<std::wstring, RuntimeError> replace_errors;

  Moment Now() const override { return moment; }
  std::wstring EnvironmentVariable(const std::wstring& name) const override;
  std::wstring CommandLine() const override { return command_line; }
  std::wstring ProgramFolder() const override { return program_folder; }
  std::wstring TemporaryFolder() const override { return temporary_folder; }
  std::optional<int> OsMajorVersion() const override { return os_major_version; }
  void ShowMessageBox(const std::wstring& caption, const std::wstring& text) override;
  void Warn(const std::wstring& line) override;
  void ShowProgress(const RunProgress& /*progress*/) override {}
  std::wstring FirstEntry(const std::wstring& path) const override;
  void MakeFolder(const std::wstring& path) override;
  std::unique_ptr<AppendFile> OpenForAppend(const std::wstring& path) override;
  std::string ReadFile(const std::wstring& path) const override;
  std::wstring RealPath(const std::wstring& path) const override;
  void ReplaceContent(const std::wstring& path, std::string_view bytes) override;
};

// ISO 8859-1: the first 256 characters, each one byte.
class Latin1CodePage : public CodePage {
 public:
  std::string ToBytes(std::wstring_view text) const override;
  std::wstring FromBytes(std::string_view bytes) const override;
  std::wstring RoundTrip(std::wstring_view text) const override;
};

// Knows "iso-8859-1" and "utf-8".
class FakeCodePages : public CodePages {
 public:
  const CodePage& Ansi() const override { return ansi_; }
  std::unique_ptr<CodePage> Find(std::string_view name) const override;

 private:
  Latin1CodePage ansi_;
};

// "v1:" and a text deciphers to the text backwards.
class FakePasswords : public Passwords {
 public:
  std::wstring database_password = L"database secret";

  std::wstring DatabasePassword() const override { return database_password; }
  std::wstring Decipher(std::wstring_view stored) const override;
};

// Locales whose current day is `today`.
inline constexpr std::chrono::sys_days kFakeToday = std::chrono::year{2026} / 11 / 16;
RegionalSettings EnglishSettings(std::chrono::sys_days today = kFakeToday);
PictureRegional EnglishRegional(std::chrono::sys_days today = kFakeToday);  // 11/16/2026 3:07:41 PM
PictureRegional BritishRegional(std::chrono::sys_days today = kFakeToday);  // 16/11/2026 15:07:41
PictureRegional GermanRegional(std::chrono::sys_days today = kFakeToday);   // 16.11.2026 15:07:41

}  // namespace pxscheduler
