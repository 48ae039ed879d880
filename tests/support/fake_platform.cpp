#include "tests/support/fake_platform.h"

#include <cwchar>

#include "platform/dates/english_names.h"
#include "platform/letter_case.h"

namespace pxscheduler {
namespace {

std::wstring RegistryPath(RegistryRoot root, std::wstring_view key, std::wstring_view name) {
  std::wstring path = root == RegistryRoot::kLocalMachine ? L"HKLM\\" : L"HKCU\\";
  path += LowerCase(key);
  path += L'\0';
  return path += LowerCase(name);
}

template <typename Errors>
void RaiseIfSet(const Errors& errors, const std::wstring& path) {
  const auto found = errors.find(path);
  if (found != errors.end()) throw found->second;
}

// "" where the path is a bare name, which the current folder holds.
std::wstring ParentOf(const std::wstring& path) {
  const std::size_t end = path.find_last_of(L'\\');
  return end == std::wstring::npos ? L"" : path.substr(0, end);
}

void RequireParent(const FakeSystem& system, const std::wstring& path) {
  const std::wstring parent = ParentOf(path);
  if (!parent.empty() && system.folders.count(parent) == 0) throw PathNotFound(path);
}

class FakeAppendFile : public AppendFile {
 public:
  FakeAppendFile(FakeSystem& system, std::wstring path) : system_(system), path_(std::move(path)) {}

  void Append(std::wstring_view text) override {
    RaiseIfSet(system_.append_errors, path_);
    system_.appended[path_] += text;
    system_.files[path_] += Latin1CodePage().ToBytes(text);
  }

 private:
  FakeSystem& system_;
  std::wstring path_;
};

class Utf8CodePage : public CodePage {
 public:
  std::string ToBytes(std::wstring_view text) const override { return ToUtf8(text); }
  std::wstring FromBytes(std::string_view bytes) const override { return FromUtf8(bytes); }
  std::wstring RoundTrip(std::wstring_view text) const override { return FromUtf8(ToUtf8(text)); }
};

CalendarNames GermanNames() {
  CalendarNames names;
  names.months = {L"Januar", L"Februar", L"M\u00E4rz", L"April",   L"Mai",      L"Juni",
                  L"Juli",   L"August",  L"September", L"Oktober", L"November", L"Dezember"};
  names.months_of_dates = names.months;
  names.short_months = {L"Jan.", L"Feb.", L"M\u00E4rz", L"Apr.", L"Mai",  L"Juni",
                        L"Juli", L"Aug.", L"Sept.",     L"Okt.", L"Nov.", L"Dez."};
  names.weekdays = {L"Sonntag",    L"Montag",  L"Dienstag", L"Mittwoch",
                    L"Donnerstag", L"Freitag", L"Samstag"};
  names.short_weekdays = {L"So.", L"Mo.", L"Di.", L"Mi.", L"Do.", L"Fr.", L"Sa."};
  return names;
}

}  // namespace

void FakeRegistry::Set(RegistryRoot root, std::wstring_view key, std::wstring_view name,
                       std::wstring value) {
  values_[RegistryPath(root, key, name)] = std::move(value);
}

std::optional<std::wstring> FakeRegistry::Value(RegistryRoot root, std::wstring_view key,
                                                std::wstring_view name) const {
  const auto found = values_.find(RegistryPath(root, key, name));
  if (found == values_.end()) return std::nullopt;
  return found->second;
}

std::wstring FakeSystem::EnvironmentVariable(const std::wstring& name) const {
  const auto found = environment.find(name);
  return found == environment.end() ? L"" : found->second;
}

void FakeSystem::ShowMessageBox(const std::wstring& caption, const std::wstring& text) {
  message_boxes.push_back({caption, text});
}

void FakeSystem::Warn(const std::wstring& line) { warnings.push_back(line); }

std::wstring FakeSystem::FirstEntry(const std::wstring& path) const {
  RaiseIfSet(first_entry_errors, path);
  if (files.count(path) == 0 && folders.count(path) == 0) return L"";
  return path.substr(path.find_last_of(L'\\') + 1);
}

void FakeSystem::MakeFolder(const std::wstring& path) {
  RaiseIfSet(make_folder_errors, path);
  if (files.count(path) != 0 || folders.count(path) != 0) throw FileAccessError(path);
  RequireParent(*this, path);
  folders.insert(path);
  made_folders.push_back(path);
}

std::unique_ptr<AppendFile> FakeSystem::OpenForAppend(const std::wstring& path) {
  RaiseIfSet(open_errors, path);
  RequireParent(*this, path);
  files.try_emplace(path);
  return std::make_unique<FakeAppendFile>(*this, path);
}

std::string FakeSystem::ReadFile(const std::wstring& path) const {
  RaiseIfSet(read_errors, path);
  const auto found = files.find(path);
  if (found == files.end()) throw FileNotFound(path);
  return found->second;
}

std::wstring FakeSystem::RealPath(const std::wstring& path) const {
  const auto link = links.find(path);
  std::wstring real = link == links.end() ? path : link->second;
  if (files.count(real) == 0 && folders.count(real) == 0) throw PathNotFound(path);
  return real;
}

void FakeSystem::ReplaceContent(const std::wstring& path, std::string_view bytes) {
  RaiseIfSet(replace_errors, path);
  RequireParent(*this, path);
  files[path] = bytes;
}

std::string Latin1CodePage::ToBytes(std::wstring_view text) const {
  std::string bytes;
  for (const wchar_t c : text) {
    const auto code = static_cast<char32_t>(c);
    bytes += code < 0x100 ? static_cast<char>(code) : '?';
  }
  return bytes;
}

std::wstring Latin1CodePage::FromBytes(std::string_view bytes) const {
  std::wstring text;
  for (const char byte : bytes) text += static_cast<wchar_t>(static_cast<unsigned char>(byte));
  return text;
}

std::wstring Latin1CodePage::RoundTrip(std::wstring_view text) const {
  return FromBytes(ToBytes(text));
}

std::unique_ptr<CodePage> FakeCodePages::Find(std::string_view name) const {
  const std::wstring lower = LowerCase(std::wstring(name.begin(), name.end()));
  if (lower == L"iso-8859-1") return std::make_unique<Latin1CodePage>();
  if (lower == L"utf-8") return std::make_unique<Utf8CodePage>();
  return nullptr;
}

std::wstring FakePasswords::Decipher(std::wstring_view stored) const {
  if (!stored.starts_with(L"v1:")) return std::wstring(stored);
  return {stored.rbegin(), stored.rend() - 3};
}

RegionalSettings EnglishSettings(std::chrono::sys_days today) {
  RegionalSettings settings;
  settings.names = EnglishCalendarNames;
  settings.today = [today] { return today; };
  return settings;
}

PictureRegional EnglishRegional(std::chrono::sys_days today) {
  return PictureRegional(EnglishSettings(today));
}

PictureRegional BritishRegional(std::chrono::sys_days today) {
  RegionalSettings settings = EnglishSettings(today);
  settings.short_date = L"dd/MM/yyyy";
  settings.long_time = L"HH:mm:ss";
  settings.morning = L"am";
  settings.afternoon = L"pm";
  return PictureRegional(settings);
}

PictureRegional GermanRegional(std::chrono::sys_days today) {
  RegionalSettings settings = EnglishSettings(today);
  settings.short_date = L"dd.MM.yyyy";
  settings.long_time = L"HH:mm:ss";
  settings.morning = L"";
  settings.afternoon = L"";
  settings.names = GermanNames;
  return PictureRegional(settings);
}

}  // namespace pxscheduler
