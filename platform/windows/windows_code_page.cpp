#include "platform/windows/windows_code_page.h"

#include <windows.h>

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "text/utf16.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

constexpr UINT kUtf8 = 65001;
constexpr std::size_t kUnits = 0x10000;
constexpr std::size_t kFirstSurrogate = 0xD800;
constexpr std::size_t kAfterSurrogates = 0xE000;
// One call of the system takes an int of units, each of which may become several bytes.
constexpr std::size_t kLongestPiece = std::size_t{1} << 24;

std::string BytesOfPiece(UINT number, std::wstring_view piece) {
  const auto units = static_cast<int>(piece.size());
  const int size =
      ::WideCharToMultiByte(number, 0, piece.data(), units, nullptr, 0, nullptr, nullptr);
  std::string bytes(static_cast<std::size_t>(std::max(size, 0)), '\0');
  ::WideCharToMultiByte(number, 0, piece.data(), units, bytes.data(), size, nullptr, nullptr);
  return bytes;
}

std::string BytesOf(UINT number, std::wstring_view text) {
  std::string bytes;
  while (!text.empty()) {
    std::size_t length = std::min(text.size(), kLongestPiece);
    if (length < text.size() && IsHighSurrogate(text[length - 1])) --length;
    bytes += BytesOfPiece(number, text.substr(0, length));
    text.remove_prefix(length);
  }
  return bytes;
}

std::wstring TextOf(UINT number, std::string_view bytes) {
  if (bytes.empty() || bytes.size() > std::numeric_limits<int>::max()) return L"";
  const auto count = static_cast<int>(bytes.size());
  const int size = ::MultiByteToWideChar(number, 0, bytes.data(), count, nullptr, 0);
  std::wstring text(static_cast<std::size_t>(std::max(size, 0)), L'\0');
  ::MultiByteToWideChar(number, 0, bytes.data(), count, text.data(), size);
  return text;
}

class Utf8CodePage : public CodePage {
 public:
  std::string ToBytes(std::wstring_view text) const override { return ToUtf8(text); }
  std::wstring FromBytes(std::string_view bytes) const override { return FromUtf8(bytes); }
  std::wstring RoundTrip(std::wstring text) const override {
    const bool plain = std::none_of(text.begin(), text.end(), IsSurrogate);
    return plain ? std::move(text) : FromUtf8(ToUtf8(text));
  }
};

// One byte for each unit, so both directions are a table.
class SingleByteCodePage : public CodePage {
 public:
  explicit SingleByteCodePage(UINT number) : bytes_(kUnits, '?'), survivors_(kUnits) {
    std::string all_bytes;
    for (int byte = 0; byte < 256; ++byte) all_bytes += static_cast<char>(byte);
    meanings_ = TextOf(number, all_bytes);
    meanings_.resize(all_bytes.size(), L'\xFFFD');
    ReadBytes(number, 0, kFirstSurrogate);
    ReadBytes(number, kAfterSurrogates, kUnits);
    for (std::size_t unit = 0; unit < kUnits; ++unit) survivors_[unit] = MeaningOf(bytes_[unit]);
  }

  std::string ToBytes(std::wstring_view text) const override {
    std::string bytes(text.size(), '\0');
    std::transform(text.begin(), text.end(), bytes.begin(),
                   [this](wchar_t unit) { return bytes_[unit]; });
    return bytes;
  }

  std::wstring FromBytes(std::string_view bytes) const override {
    std::wstring text(bytes.size(), L'\0');
    std::transform(bytes.begin(), bytes.end(), text.begin(),
                   [this](char byte) { return MeaningOf(byte); });
    return text;
  }

  std::wstring RoundTrip(std::wstring text) const override {
    std::transform(text.begin(), text.end(), text.begin(),
                   [this](wchar_t unit) { return survivors_[unit]; });
    return text;
  }

 private:
  wchar_t MeaningOf(char byte) const { return meanings_[static_cast<unsigned char>(byte)]; }

  void ReadBytes(UINT number, std::size_t begin, std::size_t end) {
    std::wstring units;
    for (std::size_t unit = begin; unit < end; ++unit) units += static_cast<wchar_t>(unit);
    const std::string bytes = BytesOf(number, units);
    if (bytes.size() == units.size()) std::copy(bytes.begin(), bytes.end(), &bytes_[begin]);
  }

  std::wstring meanings_;           // by byte
  std::vector<char> bytes_;         // by UTF-16 unit
  std::vector<wchar_t> survivors_;  // by UTF-16 unit
};

class MultiByteCodePage : public CodePage {
 public:
  explicit MultiByteCodePage(UINT number) : number_(number) {}

  std::string ToBytes(std::wstring_view text) const override { return BytesOf(number_, text); }
  std::wstring FromBytes(std::string_view bytes) const override { return TextOf(number_, bytes); }
  std::wstring RoundTrip(std::wstring text) const override {
    const bool ascii =
        std::all_of(text.begin(), text.end(), [](wchar_t unit) { return unit < 0x80; });
    return ascii ? std::move(text) : FromBytes(ToBytes(text));
  }

 private:
  UINT number_;
};

// The numbers of encodings that have a name without one.
std::optional<UINT> NumberOfName(std::string_view lower_name) {
  constexpr struct {
    std::string_view name;
    UINT number;
  } kNames[] = {
      {"utf-8", kUtf8},      {"utf8", kUtf8},       {"us-ascii", 20127},    {"ascii", 20127},
      {"iso-8859-1", 28591}, {"latin1", 28591},     {"iso-8859-2", 28592},  {"iso-8859-3", 28593},
      {"iso-8859-4", 28594}, {"iso-8859-5", 28595}, {"iso-8859-6", 28596},  {"iso-8859-7", 28597},
      {"iso-8859-8", 28598}, {"iso-8859-9", 28599}, {"iso-8859-13", 28603}, {"iso-8859-15", 28605},
      {"koi8-r", 20866},     {"koi8-u", 21866},     {"macintosh", 10000},   {"shift_jis", 932},
      {"gb2312", 936},       {"gbk", 936},          {"gb18030", 54936},     {"ks_c_5601-1987", 949},
      {"euc-kr", 51949},     {"big5", 950},         {"euc-jp", 51932},      {"ibm437", 437},
      {"ibm850", 850},       {"ibm852", 852},       {"ibm866", 866},        {"tis-620", 874},
  };
  const auto* const found =
      std::find_if(std::begin(kNames), std::end(kNames),
                   [lower_name](const auto& known) { return known.name == lower_name; });
  if (found == std::end(kNames)) return std::nullopt;
  return found->number;
}

// "1250", "cp1250" and "windows-1250" are one.
std::optional<UINT> NumberIn(std::string_view lower_name) {
  for (const std::string_view prefix : {"windows-", "cp"}) {
    if (lower_name.starts_with(prefix)) {
      lower_name.remove_prefix(prefix.size());
      break;
    }
  }
  UINT number = 0;
  const char* const end = lower_name.data() + lower_name.size();
  const auto [parsed, error] = std::from_chars(lower_name.data(), end, number);
  if (error != std::errc{} || parsed != end) return std::nullopt;
  return number;
}

std::unique_ptr<CodePage> OpenCodePage(UINT number) {
  if (number == kUtf8) return std::make_unique<Utf8CodePage>();
  CPINFO information{};
  if (::IsValidCodePage(number) == 0 || ::GetCPInfo(number, &information) == 0) return nullptr;
  if (information.MaxCharSize == 1) return std::make_unique<SingleByteCodePage>(number);
  return std::make_unique<MultiByteCodePage>(number);
}

}  // namespace

// The system's own code page is always one that it knows.
WindowsCodePages::WindowsCodePages() : ansi_(OpenCodePage(::GetACP())) {
  if (ansi_ == nullptr) ansi_ = std::make_unique<MultiByteCodePage>(CP_ACP);
}

std::unique_ptr<CodePage> WindowsCodePages::Find(std::string_view name) const {
  std::string lower(name);
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 0x20) : c; });
  std::optional<UINT> number = NumberOfName(lower);
  if (!number) number = NumberIn(lower);
  return number ? OpenCodePage(*number) : nullptr;
}

}  // namespace pxscheduler
