#include "platform/linux/native_text.h"

#include <algorithm>
#include <cstddef>

#include "text/utf16.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

constexpr wchar_t kEscape = 0xDC00;

bool IsEscapedByte(wchar_t c) { return c >= kEscape + 0x80 && c <= kEscape + 0xFF; }

char32_t UnitAt(std::string_view bytes, std::size_t position) {
  return static_cast<char32_t>(static_cast<unsigned char>(bytes[position]) |
                               static_cast<unsigned char>(bytes[position + 1]) << 8);
}

// The length of the UTF-8 character that the bytes begin with, 0 where they begin with none.
std::size_t CharacterLength(std::string_view bytes) {
  for (std::size_t length = 1; length <= std::min<std::size_t>(4, bytes.size()); ++length) {
    const std::string_view character = bytes.substr(0, length);
    const std::wstring text = FromUtf8(character);
    if (text.size() == 1 && ToUtf8(text) == character) return length;
  }
  return 0;
}

}  // namespace

std::wstring FromNative(std::string_view bytes) {
  std::wstring text = FromUtf8(bytes);
  if (ToUtf8(text) == bytes) return text;
  text.clear();
  while (!bytes.empty()) {
    const std::size_t length = CharacterLength(bytes);
    if (length == 0)
      text += static_cast<wchar_t>(kEscape + static_cast<unsigned char>(bytes[0]));
    else
      text += FromUtf8(bytes.substr(0, length));
    bytes.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return text;
}

std::string ToNative(std::wstring_view text) {
  std::string bytes;
  while (!text.empty()) {
    const auto escape = std::find_if(text.begin(), text.end(), IsEscapedByte);
    const auto plain = static_cast<std::size_t>(escape - text.begin());
    AppendUtf8(text.substr(0, plain), bytes);
    if (escape == text.end()) break;
    bytes += static_cast<char>(static_cast<unsigned char>(*escape & 0xFF));
    text.remove_prefix(plain + 1);
  }
  return bytes;
}

std::wstring FromNativePath(std::string_view path) {
  std::wstring text = FromNative(path);
  std::replace(text.begin(), text.end(), L'/', L'\\');
  return text;
}

std::string ToNativePath(std::wstring_view path) {
  std::string native = ToNative(path);
  std::replace(native.begin(), native.end(), '\\', '/');
  return native;
}

bool FromUtf16LittleEndian(std::string_view bytes, std::wstring& text) {
  text.clear();
  if (bytes.size() % 2 != 0) return false;
  text.reserve(bytes.size() / 2);
  for (std::size_t position = 0; position < bytes.size(); position += 2) {
    char32_t unit = UnitAt(bytes, position);
    if (IsSurrogate(unit)) {
      const char32_t low = position + 2 < bytes.size() ? UnitAt(bytes, position + 2) : 0;
      if (!IsHighSurrogate(unit) || !IsLowSurrogate(low)) {
        text.clear();
        return false;
      }
      unit = JoinSurrogates(unit, low);
      position += 2;
    }
    text += static_cast<wchar_t>(unit);
  }
  return true;
}

}  // namespace pxscheduler
