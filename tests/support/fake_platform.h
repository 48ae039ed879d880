#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "platform/code_page.h"
#include "platform/dates/picture_regional.h"
#include "platform/passwords.h"
#include "platform/registry.h"
#include "platform/runtime_error.h"
#include "platform/system.h"

namespace pxscheduler {

// Keys and names compare with case.
class FakeRegistry : public Registry {
 public:
  void Set(RegistryRoot root, const std::wstring& key, const std::wstring& name,
           const std::wstring& value) {
    values_[{root, key, name}] = value;
  }
  std::optional<std::wstring> Value(RegistryRoot root, std::wstring_view key,
                                    std::wstring_view name) const override;
  std::wstring FileOf(RegistryRoot /*root*/, std::wstring_view /*key*/,
                      std::wstring_view /*name*/) const override {
    return L"";
  }

 private:
  std::map<std::tuple<RegistryRoot, std::wstring, std::wstring>, std::wstring> values_;
};

// A machine in memory. The test sets what it holds. File and folder names compare with case.
class FakeSystem : public System {
 public:
  Moment moment{{std::chrono::year{2026} / 11 / 16, std::chrono::hours{15}}, {}};
  std::map<std::wstring, std::wstring> environment;
  std::wstring temporary_folder = L"C:\\Temp\\";
  std::optional<int> os_major_version = 6;
  std::map<std::wstring, std::string> files;
  std::set<std::wstring> folders;
  std::map<std::wstring, std::wstring> links;  // what RealPath makes of a path, where another one
  std::vector<std::wstring> warnings;          // that were given
  std::optional<int> stop_status;

  Moment Now() const override { return moment; }
  std::wstring EnvironmentVariable(const std::wstring& name) const override;
  std::wstring CommandLine() const override { return L""; }
  std::wstring ProgramFolder() const override { return L"C:\\Program"; }
  std::wstring TemporaryFolder() const override { return temporary_folder; }
  std::optional<int> OsMajorVersion() const override { return os_major_version; }
  void ShowMessageBox(const std::wstring& /*caption*/, const std::wstring& /*text*/) override {}
  void Warn(const std::wstring& line) override { warnings.push_back(line); }
  void ShowProgress(const RunProgress& /*progress*/) override {}
  void HoldStopRequests() override {}
  std::optional<int> StopStatus() const override { return stop_status; }
  std::wstring FirstEntry(const std::wstring& path) const override;
  void MakeFolder(const std::wstring& path) override { folders.insert(path); }
  std::unique_ptr<AppendFile> OpenForAppend(const std::wstring& /*path*/) override { return {}; }
  std::string ReadFile(const std::wstring& path) const override;
  std::wstring ShownPath(const std::wstring& path) const override { return path; }
  bool IsReadableByAll(const std::wstring& /*path*/) const override { return false; }
  std::wstring RealPath(const std::wstring& path) const override;
  void ReplaceContent(const std::wstring& path, std::string_view bytes) override {
    files[path] = bytes;
  }
  std::unique_ptr<FolderLock> LockFolder(const std::wstring& /*path*/) override { return {}; }
};

// ISO 8859-1: the first 256 characters, each one byte.
class Latin1CodePage : public CodePage {
 public:
  std::string ToBytes(std::wstring_view text) const override;
  std::wstring FromBytes(std::string_view bytes) const override;
  std::wstring RoundTrip(std::wstring text) const override;
};

// Knows "iso-8859-1" and "utf-8".
class FakeCodePages : public CodePages {
 public:
  const CodePage& Ansi() const override { return ansi_; }
  std::unique_ptr<CodePage> Find(std::string_view name) const override;

 private:
  Latin1CodePage ansi_;
};

class FakePasswords : public Passwords {
 public:
  std::wstring DatabasePassword() const override { return L"database secret"; }
  std::wstring Decipher(std::wstring_view stored) const override {
    return L"deciphered " + std::wstring{stored};
  }
};

// Locales whose current day is 2026-11-16.
RegionalSettings EnglishSettings();
PictureRegional EnglishRegional();  // 11/16/2026 3:07:41 PM
PictureRegional BritishRegional();  // 16/11/2026 15:07:41
PictureRegional GermanRegional();   // 16.11.2026 15:07:41

}  // namespace pxscheduler
