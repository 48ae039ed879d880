#include "platform/linux/icu_code_page.h"

#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>
#include <unicode/uset.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "platform/runtime_error.h"
#include "text/utf16.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

static_assert(sizeof(wchar_t) == 4, "one element of wide text is one character");

constexpr std::size_t kBasicPlane = 0x10000;
constexpr std::size_t kBlockLength = 16;

struct ConverterCloser {
  void operator()(UConverter* converter) const { ucnv_close(converter); }
};
using Converter = std::unique_ptr<UConverter, ConverterCloser>;

struct SetCloser {
  void operator()(USet* set) const { uset_close(set); }
};
using CharacterSet = std::unique_ptr<USet, SetCloser>;

// The first position from `begin` on where a character is not below the limit, up to fifteen places
// early; the size where there is none. The inner loop is one that compilers turn into vector
// instructions.
std::size_t SkipBelow(std::wstring_view text, std::size_t begin, std::uint32_t limit_power_of_two) {
  const std::uint32_t high_bits = ~(limit_power_of_two - 1);
  std::uint32_t joined = 0;
  for (; begin + kBlockLength <= text.size(); begin += kBlockLength) {
    for (std::size_t i = 0; i < kBlockLength; ++i)
      joined |= static_cast<std::uint32_t>(text[begin + i]);
    if ((joined & high_bits) != 0) return begin;
  }
  for (const wchar_t character : text.substr(begin))
    joined |= static_cast<std::uint32_t>(character);
  return (joined & high_bits) != 0 ? begin : text.size();
}

// The text with each character that does not survive replaced. Characters below `always`, a power
// of two, are not looked at one by one.
template <typename Survives>
std::wstring KeepSurvivors(std::wstring text, std::uint32_t always, wchar_t replacement,
                           const Survives& survives) {
  std::size_t position = 0;
  while ((position = SkipBelow(text, position, always)) < text.size()) {
    const std::size_t block_end = std::min(position + kBlockLength, text.size());
    for (; position < block_end; ++position)
      if (!survives(static_cast<char32_t>(text[position]))) text[position] = replacement;
  }
  return text;
}

class Utf8CodePage : public CodePage {
 public:
  std::string ToBytes(std::wstring_view text) const override { return ToUtf8(text); }
  std::wstring FromBytes(std::string_view bytes) const override { return FromUtf8(bytes); }
  std::wstring RoundTrip(std::wstring text) const override {
    return KeepSurvivors(std::move(text), 0x8000, wchar_t{kReplacementCharacter},
                         [](char32_t c) { return !IsSurrogate(c) && c <= 0x10FFFF; });
  }
};

using ByteMeanings = std::array<wchar_t, 256>;

class SingleByteCodePage : public CodePage {
 public:
  // `characters` is what each byte stands for, U+FFFD where it is nothing.
  explicit SingleByteCodePage(const ByteMeanings& characters)
      : characters_(characters), bytes_(kBasicPlane) {
    for (std::size_t byte = 0; byte < characters.size(); ++byte) {
      const auto character = static_cast<char32_t>(characters[byte]);
      // The lower byte where two stand for one character.
      if (character != kReplacementCharacter && bytes_[character] == 0)
        bytes_[character] = static_cast<unsigned char>(byte);
    }
    ascii_ = true;
    for (std::size_t i = 1; i < 0x80; ++i) ascii_ = ascii_ && bytes_[i] == i;
    question_ = ByteOf(U'?', 0);
  }

  std::string ToBytes(std::wstring_view text) const override {
    std::string bytes(text.size(), '\0');
    for (std::size_t i = 0; i < text.size(); ++i)
      bytes[i] = static_cast<char>(ByteOf(static_cast<char32_t>(text[i]), question_));
    return bytes;
  }

  std::wstring FromBytes(std::string_view bytes) const override {
    std::wstring text(bytes.size(), L'\0');
    for (std::size_t i = 0; i < bytes.size(); ++i)
      text[i] = characters_[static_cast<unsigned char>(bytes[i])];
    return text;
  }

  std::wstring RoundTrip(std::wstring text) const override {
    return KeepSurvivors(std::move(text), ascii_ ? 0x80 : 1, L'?', [this](char32_t c) {
      return c == 0 || (c < kBasicPlane && bytes_[c] != 0);
    });
  }

 private:
  unsigned char ByteOf(char32_t character, unsigned char otherwise) const {
    if (character == 0) return 0;
    if (character >= kBasicPlane || bytes_[character] == 0) return otherwise;
    return bytes_[character];
  }

  ByteMeanings characters_;
  std::vector<unsigned char> bytes_;  // by character of the basic plane; 0: it lacks that one
  bool ascii_ = false;                // every ASCII character is its own byte
  unsigned char question_ = 0;
};

class MultiByteCodePage : public CodePage {
 public:
  explicit MultiByteCodePage(Converter converter)
      : converter_(std::move(converter)), survivors_(uset_openEmpty()), survives_(kBasicPlane) {
    UErrorCode error = U_ZERO_ERROR;
    ucnv_getUnicodeSet(converter_.get(), survivors_.get(), UCNV_ROUNDTRIP_SET, &error);
    // Some encodings count surrogates in; they are no characters.
    uset_removeRange(survivors_.get(), 0xD800, 0xDFFF);
    for (std::size_t c = 0; c < kBasicPlane; ++c)
      survives_[c] = uset_contains(survivors_.get(), static_cast<UChar32>(c)) != 0;
    ascii_ = uset_containsRange(survivors_.get(), 0, 0x7F) != 0;
  }

  std::string ToBytes(std::wstring_view text) const override {
    const std::u16string source = Utf16(RoundTrip(std::wstring(text)));
    std::string bytes;
    UErrorCode error = U_ZERO_ERROR;
    const UChar* from = source.data();
    const UChar* const from_end = from + source.size();
    std::array<char, 4096> buffer;
    ucnv_reset(converter_.get());
    do {
      error = U_ZERO_ERROR;
      char* to = buffer.data();
      ucnv_fromUnicode(converter_.get(), &to, buffer.data() + buffer.size(), &from, from_end,
                       nullptr, true, &error);
      bytes.append(buffer.data(), to);
    } while (error == U_BUFFER_OVERFLOW_ERROR);
    return bytes;
  }

  std::wstring FromBytes(std::string_view bytes) const override {
    std::wstring text;
    UErrorCode error = U_ZERO_ERROR;
    const char* from = bytes.data();
    const char* const from_end = from + bytes.size();
    std::array<UChar, 4096> buffer;
    char32_t high = 0;  // a surrogate whose other half is in the next buffer
    ucnv_reset(converter_.get());
    do {
      error = U_ZERO_ERROR;
      UChar* to = buffer.data();
      ucnv_toUnicode(converter_.get(), &to, buffer.data() + buffer.size(), &from, from_end, nullptr,
                     true, &error);
      for (const UChar* unit = buffer.data(); unit < to; ++unit) AppendUnit(*unit, high, text);
    } while (error == U_BUFFER_OVERFLOW_ERROR);
    return text;
  }

  std::wstring RoundTrip(std::wstring text) const override {
    return KeepSurvivors(std::move(text), ascii_ ? 0x80 : 1, L'?', [this](char32_t c) {
      if (c < kBasicPlane) return static_cast<bool>(survives_[c]);
      return c <= 0x10FFFF && uset_contains(survivors_.get(), static_cast<UChar32>(c)) != 0;
    });
  }

 private:
  static std::u16string Utf16(std::wstring_view text) {
    std::u16string units;
    units.reserve(text.size());
    for (const wchar_t c : text) {
      const auto character = static_cast<char32_t>(c);
      if (character >= kBasicPlane) {
        units += static_cast<char16_t>(U16_LEAD(character));
        units += static_cast<char16_t>(U16_TRAIL(character));
      } else {
        units += static_cast<char16_t>(character);
      }
    }
    return units;
  }

  static void AppendUnit(UChar unit, char32_t& high, std::wstring& text) {
    if (U16_IS_LEAD(unit)) {
      high = unit;
    } else if (U16_IS_TRAIL(unit) && high != 0) {
      text += static_cast<wchar_t>(U16_GET_SUPPLEMENTARY(high, unit));
      high = 0;
    } else {
      text += static_cast<wchar_t>(unit);
    }
  }

  Converter converter_;
  CharacterSet survivors_;
  std::vector<bool> survives_;  // by character of the basic plane
  bool ascii_ = false;          // every ASCII character survives
};

// ICU's own substitution writes U+001A for a single byte in some encodings.
void SubstituteReplacement(const void* /*context*/, UConverterToUnicodeArgs* arguments,
                           const char* /*bytes*/, std::int32_t /*length*/,
                           UConverterCallbackReason reason, UErrorCode* error) {
  if (reason > UCNV_IRREGULAR) return;  // no bytes, but a reset or the end
  *error = U_ZERO_ERROR;
  const UChar replacement = kReplacementCharacter;
  ucnv_cbToUWriteUChars(arguments, &replacement, 1, 0, error);
}

// Null for a name that ICU does not know.
Converter OpenConverter(const std::string& name) {
  UErrorCode error = U_ZERO_ERROR;
  Converter converter(ucnv_open(name.c_str(), &error));
  if (U_FAILURE(error)) return nullptr;
  ucnv_setToUCallBack(converter.get(), SubstituteReplacement, nullptr, nullptr, nullptr, &error);
  ucnv_setFallback(converter.get(), 0);
  if (U_FAILURE(error)) return nullptr;
  return converter;
}

ByteMeanings MeaningsOf(UConverter* converter) {
  ByteMeanings meanings{};
  for (std::size_t byte = 0; byte < meanings.size(); ++byte) {
    const char source = static_cast<char>(static_cast<unsigned char>(byte));
    std::array<UChar, 4> target{};
    UErrorCode error = U_ZERO_ERROR;
    const std::int32_t length = ucnv_toUChars(
        converter, target.data(), static_cast<std::int32_t>(target.size()), &source, 1, &error);
    const bool defined = U_SUCCESS(error) && length == 1;
    meanings[byte] = static_cast<wchar_t>(defined ? target[0] : kReplacementCharacter);
  }
  return meanings;
}

// Western European Windows, known by heart: it is the usual code page, and opening ICU's data takes
// milliseconds. The five bytes without a meaning are control characters, as Windows takes them.
ByteMeanings WesternMeanings() {
  constexpr std::array<wchar_t, 32> kAboveAscii = {
      0x20AC, 0x81,   0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
      0x2039, 0x0152, 0x8D,   0x017D, 0x8F,   0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
      0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D,   0x017E, 0x0178};
  ByteMeanings meanings{};
  for (std::size_t byte = 0; byte < meanings.size(); ++byte) {
    const bool differs = byte >= 0x80 && byte < 0x80 + kAboveAscii.size();
    meanings[byte] = differs ? kAboveAscii[byte - 0x80] : static_cast<wchar_t>(byte);
  }
  return meanings;
}

// Windows numbers that ICU does not know by "windows-" and the number.
const char* NameOfWindowsNumber(std::string_view number) {
  constexpr struct {
    std::string_view number;
    const char* name;
  } kNames[] = {
      {"437", "ibm-437"},       {"850", "ibm-850"},       {"852", "ibm-852"},
      {"858", "ibm-858"},       {"866", "ibm-866"},       {"10000", "macintosh"},
      {"20127", "us-ascii"},    {"20866", "koi8-r"},      {"21866", "koi8-u"},
      {"28591", "iso-8859-1"},  {"28592", "iso-8859-2"},  {"28593", "iso-8859-3"},
      {"28594", "iso-8859-4"},  {"28595", "iso-8859-5"},  {"28596", "iso-8859-6"},
      {"28597", "iso-8859-7"},  {"28598", "iso-8859-8"},  {"28599", "iso-8859-9"},
      {"28603", "iso-8859-13"}, {"28605", "iso-8859-15"}, {"51932", "euc-jp"},
      {"51949", "euc-kr"},      {"54936", "gb18030"},     {"65001", "utf-8"},
  };
  for (const auto& known : kNames)
    if (known.number == number) return known.name;
  return nullptr;
}

// "1250", "cp1250" and "windows-1250" are one; "" where the name ends in no number.
std::string_view WindowsNumber(std::string_view lower_name) {
  for (const std::string_view prefix : {"windows-", "cp"}) {
    if (lower_name.starts_with(prefix)) {
      lower_name.remove_prefix(prefix.size());
      break;
    }
  }
  const bool digits = std::all_of(lower_name.begin(), lower_name.end(),
                                  [](char c) { return c >= '0' && c <= '9'; });
  return digits ? lower_name : std::string_view{};
}

// Whether ICU would take the name as one: no options after commas, no default for "".
bool IsPlainName(std::string_view name) {
  return !name.empty() && name.size() < UCNV_MAX_CONVERTER_NAME_LENGTH &&
         std::all_of(name.begin(), name.end(), [](char c) {
           return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || c == '-' || c == '_' ||
                  c == '.' || c == ':';
         });
}

std::unique_ptr<CodePage> FindCodePage(std::string_view name) {
  std::string lower(name);
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 0x20) : c; });
  if (!IsPlainName(lower)) return nullptr;
  const std::string_view number = WindowsNumber(lower);
  if (!number.empty()) {
    const char* known = NameOfWindowsNumber(number);
    lower = known != nullptr ? known : "windows-" + std::string(number);
  }
  if (lower == "utf-8" || lower == "utf8") return std::make_unique<Utf8CodePage>();
  if (lower == "windows-1252") return std::make_unique<SingleByteCodePage>(WesternMeanings());
  Converter converter = OpenConverter(lower);
  if (converter == nullptr) return nullptr;
  if (ucnv_getMaxCharSize(converter.get()) == 1)
    return std::make_unique<SingleByteCodePage>(MeaningsOf(converter.get()));
  return std::make_unique<MultiByteCodePage>(std::move(converter));
}

RuntimeError UnknownCodePage(std::wstring_view name) {
  RuntimeError error = InvalidProcedureCall();
  error.description += L": unknown code page \"" + std::wstring(name) + L'"';
  return error;
}

}  // namespace

IcuCodePages::IcuCodePages(std::wstring_view ansi) : ansi_(FindCodePage(ToUtf8(ansi))) {
  if (ansi_ == nullptr) throw UnknownCodePage(ansi);
}

std::unique_ptr<CodePage> IcuCodePages::Find(std::string_view name) const {
  return FindCodePage(name);
}

}  // namespace pxscheduler
