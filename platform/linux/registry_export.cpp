#include "platform/linux/registry_export.h"

#include <cstddef>
#include <cstdint>
#include <optional>

#include "platform/letter_case.h"
#include "platform/linux/export_lines.h"
#include "platform/linux/native_text.h"
#include "text/hexadecimal.h"

namespace pxscheduler {
namespace {

constexpr std::wstring_view kHeader = L"Windows Registry Editor Version 5.00";

void SkipBlanks(std::wstring_view& text) {
  while (text.starts_with(L' ') || text.starts_with(L'\t')) text.remove_prefix(1);
}

bool TakePrefix(std::wstring_view& text, std::wstring_view prefix) {
  if (!text.starts_with(prefix)) return false;
  text.remove_prefix(prefix.size());
  return true;
}

bool TakePrefixWithoutCase(std::wstring_view& text, std::wstring_view lower_prefix) {
  if (LowerCase(text.substr(0, lower_prefix.size())) != lower_prefix) return false;
  text.remove_prefix(lower_prefix.size());
  return true;
}

// -1 where it is no digit of a hexadecimal number.
// The hexadecimal number that the text begins with; nothing where it has no digit or too many.
std::optional<std::uint32_t> TakeHexNumber(std::wstring_view& text, std::size_t most_digits) {
  std::uint32_t number = 0;
  std::size_t digits = 0;
  for (; !text.empty() && HexDigitValue(text[0]) >= 0; text.remove_prefix(1)) {
    if (++digits > most_digits) return std::nullopt;
    number = number << 4 | static_cast<std::uint32_t>(HexDigitValue(text[0]));
  }
  if (digits == 0) return std::nullopt;
  return number;
}

// The types of value whose bytes can be read as text or as a number.
enum ValueType : std::uint32_t {
  kString = 1,
  kExpandString = 2,
  kDword = 4,
  kBinary = 3,
  kQword = 11
};

class ExportReader {
 public:
  ExportReader(std::string_view bytes, const std::string& file, RegistryContent& content)
      : lines_(bytes, file), content_(content) {}

  void Read();

 private:
  struct Root {
    bool kept = false;  // one of the two roots that are read
    RegistryRoot root = RegistryRoot::kLocalMachine;
  };

  void ReadHeader();
  void ReadKey(std::wstring_view line);
  Root TakeRoot(std::wstring_view& path) const;
  void ReadValue(std::wstring_view line);
  std::wstring TakeString(std::wstring_view& text) const;
  std::wstring TakeDword(std::wstring_view& text) const;
  std::optional<std::wstring> ReadHexValue(std::wstring_view rest);
  std::string ReadHexBytes(std::wstring_view rest);
  std::optional<std::wstring> Interpret(std::uint32_t type, const std::string& bytes) const;
  void ExpectEnd(std::wstring_view rest) const;

  ExportLines lines_;
  RegistryContent& content_;
  std::wstring line_;
  RegistryContent::Values unread_;             // the values of roots that are not read
  RegistryContent::Values* values_ = nullptr;  // of the current key, null outside of one
};

void ExportReader::Read() {
  if (!lines_.Next(line_)) return;
  ReadHeader();
  while (lines_.Next(line_)) {
    std::wstring_view line = line_;
    SkipBlanks(line);
    if (line.empty() || line[0] == L';') continue;
    if (line[0] == L'[')
      ReadKey(line.substr(1));
    else
      ReadValue(line);
  }
}

void ExportReader::ReadHeader() {
  std::wstring_view line = line_;
  if (!TakePrefix(line, kHeader))
    lines_.Fail(L"not a registry export, which begins with \"" + std::wstring(kHeader) + L"\"");
  ExpectEnd(line);
}

// `line` begins after the opening bracket.
void ExportReader::ReadKey(std::wstring_view line) {
  const bool deletes = TakePrefix(line, L"-");
  const std::size_t end = line.find_last_of(L']');  // a key's name may hold brackets
  if (end == std::wstring_view::npos) lines_.Fail(L"no closing bracket");
  ExpectEnd(line.substr(end + 1));
  std::wstring_view path = line.substr(0, end);
  const Root root = TakeRoot(path);
  values_ = nullptr;
  if (!root.kept) {
    if (!deletes) values_ = &unread_;
  } else if (deletes) {
    if (path.empty()) lines_.Fail(L"a root cannot be deleted");
    content_.DeleteKey(root.root, path);
  } else {
    values_ = &content_.Key(root.root, path);
  }
}

// Takes the root and the separator after it.
ExportReader::Root ExportReader::TakeRoot(std::wstring_view& path) const {
  const std::size_t separator = path.find(L'\\');
  const std::wstring name = UpperCase(path.substr(0, separator));
  path = separator == std::wstring_view::npos ? L"" : path.substr(separator + 1);
  if (name == L"HKEY_LOCAL_MACHINE" || name == L"HKLM") return {true, RegistryRoot::kLocalMachine};
  if (name == L"HKEY_CURRENT_USER" || name == L"HKCU") return {true, RegistryRoot::kCurrentUser};
  for (const wchar_t* other :
       {L"HKEY_CLASSES_ROOT", L"HKCR", L"HKEY_USERS", L"HKU", L"HKEY_CURRENT_CONFIG", L"HKCC"})
    if (name == other) return {};
  lines_.Fail(L"unknown root key");
}

void ExportReader::ReadValue(std::wstring_view line) {
  std::wstring name;
  if (!TakePrefix(line, L"@")) {
    if (line[0] != L'"') lines_.Fail(L"neither a key nor a value");
    name = TakeString(line);
  }
  SkipBlanks(line);
  if (!TakePrefix(line, L"=")) lines_.Fail(L"no \"=\" after the name of the value");
  SkipBlanks(line);
  if (values_ == nullptr) lines_.Fail(L"a value outside of a key");

  std::optional<std::wstring> text;
  if (line.starts_with(L'"')) {
    text = TakeString(line);
    ExpectEnd(line);
  } else if (TakePrefix(line, L"-")) {
    ExpectEnd(line);
  } else if (TakePrefixWithoutCase(line, L"dword:")) {
    text = TakeDword(line);
    ExpectEnd(line);
  } else if (TakePrefixWithoutCase(line, L"hex")) {
    text = ReadHexValue(line);
  } else {
    lines_.Fail(L"unknown kind of value");
  }
  if (text)
    (*values_)[LowerCase(name)] = {*std::move(text), lines_.File()};
  else
    values_->erase(LowerCase(name));
}

// Takes a text in quotation marks, in which "\" stands before "\" and before a quotation mark.
std::wstring ExportReader::TakeString(std::wstring_view& text) const {
  std::wstring taken;
  for (std::size_t i = 1; i < text.size(); ++i) {
    if (text[i] == L'"') {
      text.remove_prefix(i + 1);
      return taken;
    }
    if (text[i] == L'\\') {
      ++i;
      if (i == text.size() || (text[i] != L'\\' && text[i] != L'"'))
        lines_.Fail(L"a single \"\\\" in a text, where it is written twice");
    }
    taken += text[i];
  }
  lines_.Fail(L"no closing quotation mark");
}

std::wstring ExportReader::TakeDword(std::wstring_view& text) const {
  const std::optional<std::uint32_t> number = TakeHexNumber(text, 8);
  if (!number) lines_.Fail(L"a dword is one to eight hexadecimal digits");
  return std::to_wstring(*number);
}

// `rest` begins after "hex".
std::optional<std::wstring> ExportReader::ReadHexValue(std::wstring_view rest) {
  std::uint32_t type = kBinary;
  if (TakePrefix(rest, L"(")) {
    const std::optional<std::uint32_t> number = TakeHexNumber(rest, 8);
    if (!number || !TakePrefix(rest, L")")) lines_.Fail(L"unknown kind of value");
    type = *number;
  }
  if (!TakePrefix(rest, L":")) lines_.Fail(L"unknown kind of value");
  return Interpret(type, ReadHexBytes(rest));
}

// Bytes of one or two digits between commas. A "\" at the end of a line goes on on the next.
std::string ExportReader::ReadHexBytes(std::wstring_view rest) {
  std::string bytes;
  bool expects_byte = false;  // after a comma
  while (true) {
    SkipBlanks(rest);
    if (TakePrefix(rest, L"\\")) {
      ExpectEnd(rest);
      if (!lines_.Next(line_)) lines_.Fail(L"the value breaks off");
      rest = line_;
      continue;
    }
    if (!expects_byte && !bytes.empty()) break;
    if (bytes.empty() && (rest.empty() || rest[0] == L';')) break;
    const std::optional<std::uint32_t> byte = TakeHexNumber(rest, 2);
    if (!byte) lines_.Fail(L"a byte is one or two hexadecimal digits");
    bytes += static_cast<char>(static_cast<unsigned char>(*byte));
    SkipBlanks(rest);
    expects_byte = TakePrefix(rest, L",");
  }
  ExpectEnd(rest);
  return bytes;
}

std::optional<std::wstring> ExportReader::Interpret(std::uint32_t type,
                                                    const std::string& bytes) const {
  if (type == kString || type == kExpandString) {
    std::wstring text;
    if (!FromUtf16LittleEndian(bytes, text)) lines_.Fail(L"the bytes are not UTF-16 text");
    return text.substr(0, text.find(L'\0'));
  }
  if (type != kDword && type != kQword) return std::nullopt;
  if (bytes.size() != (type == kDword ? 4 : 8))
    lines_.Fail(L"a number has four bytes, or eight as hex(b)");
  std::uint64_t number = 0;
  for (std::size_t i = bytes.size(); i > 0; --i)
    number = number << 8 | static_cast<unsigned char>(bytes[i - 1]);
  return std::to_wstring(number);
}

void ExportReader::ExpectEnd(std::wstring_view rest) const {
  SkipBlanks(rest);
  if (!rest.empty() && rest[0] != L';') lines_.Fail(L"more text than expected");
}

}  // namespace

void ApplyRegistryExport(std::string_view bytes, const std::string& file,
                         RegistryContent& content) {
  ExportReader(bytes, file, content).Read();
}

}  // namespace pxscheduler
