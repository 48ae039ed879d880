#include "tests/support/fake_platform.h"

#include "platform/dates/english_names.h"
#include "platform/letter_case.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

class Utf8CodePage : public CodePage {
 public:
  std::string ToBytes(std::wstring_view text) const override { return ToUtf8(text); }
  std::wstring FromBytes(std::string_view bytes) const override { return FromUtf8(bytes); }
  std::wstring RoundTrip(std::wstring text) const override { return FromUtf8(ToUtf8(text)); }
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

std::optional<std::wstring> FakeRegistry::Value(RegistryRoot root, std::wstring_view key,
                                                std::wstring_view name) const {
  const auto found = values_.find({root, std::wstring{key}, std::wstring{name}});
  if (found == values_.end()) return std::nullopt;
  return found->second;
}

std::wstring FakeSystem::EnvironmentVariable(const std::wstring& name) const {
  const auto found = environment.find(name);
  return found == environment.end() ? L"" : found->second;
}

std::wstring FakeSystem::FirstEntry(const std::wstring& path) const {
  return files.contains(path) || folders.contains(path) ? path : L"";
}

std::string FakeSystem::ReadFile(const std::wstring& path) const {
  const auto found = files.find(path);
  if (found == files.end()) throw FileNotFound(path);
  return found->second;
}

std::wstring FakeSystem::RealPath(const std::wstring& path) const {
  const auto link = links.find(path);
  std::wstring real = link == links.end() ? path : link->second;
  if (!files.contains(real) && !folders.contains(real)) throw PathNotFound(path);
  return real;
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

std::wstring Latin1CodePage::RoundTrip(std::wstring text) const { return FromBytes(ToBytes(text)); }

std::unique_ptr<CodePage> FakeCodePages::Find(std::string_view name) const {
  const std::wstring lower = LowerCase(std::wstring(name.begin(), name.end()));
  if (lower == L"iso-8859-1") return std::make_unique<Latin1CodePage>();
  if (lower == L"utf-8") return std::make_unique<Utf8CodePage>();
  return nullptr;
}

RegionalSettings EnglishSettings() {
  RegionalSettings settings;
  settings.names = EnglishCalendarNames;
  settings.today = [] { return std::chrono::year{2026} / 11 / 16; };
  return settings;
}

PictureRegional EnglishRegional() { return PictureRegional(EnglishSettings()); }

PictureRegional BritishRegional() {
  RegionalSettings settings = EnglishSettings();
  settings.short_date = L"dd/MM/yyyy";
  settings.long_time = L"HH:mm:ss";
  return PictureRegional(settings);
}

PictureRegional GermanRegional() {
  RegionalSettings settings = EnglishSettings();
  settings.short_date = L"dd.MM.yyyy";
  settings.long_time = L"HH:mm:ss";
  settings.morning = L"";
  settings.afternoon = L"";
  settings.names = GermanNames;
  return PictureRegional(settings);
}

}  // namespace pxscheduler
