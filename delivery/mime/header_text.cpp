#include "delivery/mime/header_text.h"

#include <algorithm>
#include <string>

#include "delivery/mime/ascii_characters.h"
#include "text/base64.h"
#include "text/hexadecimal.h"
#include "text/text.h"
#include "text/utf8.h"

namespace pxscheduler {

namespace {

constexpr std::size_t kLineLength = 78;         // RFC 5322 section 2.1.1
constexpr std::size_t kEncodedLineLength = 76;  // RFC 2047 section 2, which limits a word to 75
constexpr std::string_view kWordStart = "=?utf-8?";
constexpr std::size_t kWordOverhead = 12;  // "=?utf-8?Q?" and "?="
constexpr std::string_view kFold = "\r\n ";

bool IsControl(wchar_t unit) {
  const auto code = static_cast<char32_t>(unit);
  return code < 0x20 || (code >= 0x7F && code < 0xA0) || code == 0x2028 || code == 0x2029;
}

bool IsPrintableAscii(wchar_t unit) { return unit >= L' ' && unit < 0x7F; }

// The text with blanks for control characters and none at its ends: a view into it, or into `copy`
// where it had to be changed.
std::wstring_view Cleaned(std::wstring_view text, std::wstring& copy) {
  if (std::any_of(text.begin(), text.end(), IsControl)) {
    copy = text;
    std::replace_if(copy.begin(), copy.end(), IsControl, L' ');
    text = copy;
  }
  return TrimBlanks(text);
}

bool NeedsEncoding(std::wstring_view text) {
  return !std::all_of(text.begin(), text.end(), IsPrintableAscii) ||
         text.find(L"=?") != std::wstring_view::npos;
}

// What "Q" encoding leaves as it is, wherever the encoded word stands (RFC 2047 section 5).
bool StandsForItself(char byte) {
  return IsAsciiAlphanumeric(byte) ||
         std::string_view("!*+-/").find(byte) != std::string_view::npos;
}

std::size_t QSize(std::string_view bytes) {
  std::size_t size = 0;
  for (const char byte : bytes) size += StandsForItself(byte) || byte == ' ' ? 1U : 3U;
  return size;
}

std::string QEncoded(std::string_view bytes) {
  std::string text;
  for (const char byte : bytes) {
    if (StandsForItself(byte)) {
      text += byte;
    } else if (byte == ' ') {
      text += '_';
    } else {
      text += '=';
      text += kCapitalHexDigits[static_cast<unsigned char>(byte) >> 4];
      text += kCapitalHexDigits[static_cast<unsigned char>(byte) & 0xF];
    }
  }
  return text;
}

std::size_t CharacterEnd(std::string_view bytes, std::size_t start) {
  std::size_t end = start + 1;
  while (end < bytes.size() && (static_cast<unsigned char>(bytes[end]) & 0xC0) == 0x80) ++end;
  return end;
}

// Returns the column after the last word.
std::size_t AppendEncodedWords(std::wstring_view text, std::size_t column, ByteBuffer& out) {
  const std::string bytes = ToUtf8(text);
  const bool as_base64 = QSize(bytes) > 2 * bytes.size();  // else "Q", which people can read
  const auto encoded_size = [&](std::size_t start, std::size_t end) {
    return as_base64 ? (end - start + 2) / 3 * 4
                     : QSize(std::string_view(bytes).substr(start, end - start));
  };
  for (std::size_t start = 0; start < bytes.size();) {
    const std::size_t room = kEncodedLineLength - std::min(column, kEncodedLineLength);
    std::size_t end = start;
    while (end < bytes.size()) {
      const std::size_t next = CharacterEnd(bytes, end);
      if (encoded_size(start, next) + kWordOverhead > room) break;
      end = next;
    }
    if (end == start) {  // no room on this line for even one character
      out.Append(kFold);
      column = 1;
      continue;
    }
    const std::string_view characters = std::string_view(bytes).substr(start, end - start);
    const std::string payload = as_base64 ? EncodeBase64(characters) : QEncoded(characters);
    out.Append(kWordStart);
    out.Append(as_base64 ? "B?" : "Q?");
    out.Append(payload);
    out.Append("?=");
    column += payload.size() + kWordOverhead;
    start = end;
  }
  return column;
}

// The length of the blanks and the word that begin at `start`.
std::size_t WordLength(std::wstring_view text, std::size_t start) {
  const std::size_t word = text.find_first_not_of(L' ', start);
  return std::min(text.find(L' ', word), text.size()) - start;
}

bool HasLongWord(std::wstring_view text) {
  for (std::size_t start = 0; start < text.size(); start += WordLength(text, start))
    if (WordLength(text, start) > kLineLength) return true;
  return false;
}

void AppendAscii(std::wstring_view text, ByteBuffer& out) {
  char* const end = out.Room(text.size());
  std::transform(text.begin(), text.end(), end,
                 [](wchar_t unit) { return static_cast<char>(unit); });
  out.SetEnd(end + text.size());
}

// Breaks lines before blanks, so that unfolding restores the text.
void AppendFolded(std::wstring_view text, std::size_t column, ByteBuffer& out) {
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t length = WordLength(text, start);
    if (column + length > kLineLength && start > 0) {
      out.Append("\r\n");
      column = 0;
    }
    AppendAscii(text.substr(start, length), out);
    column += length;
    start += length;
  }
}

bool IsAtoms(std::wstring_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](wchar_t unit) { return unit == L' ' || IsAtomCharacter(unit); });
}

std::wstring Quoted(std::wstring_view text) {
  std::wstring quoted = L"\"";
  for (const wchar_t unit : text) {
    if (unit == L'"' || unit == L'\\') quoted += L'\\';
    quoted += unit;
  }
  quoted += L'"';
  return quoted;
}

}  // namespace

void AppendUnstructured(std::wstring_view text, std::size_t column, ByteBuffer& out) {
  std::wstring copy;
  const std::wstring_view clean = Cleaned(text, copy);
  if (NeedsEncoding(clean) || HasLongWord(clean))
    AppendEncodedWords(clean, column, out);
  else
    AppendFolded(clean, column, out);
}

void AppendMailbox(std::wstring_view name, std::string_view address, std::size_t column,
                   ByteBuffer& out) {
  std::wstring copy;
  const std::wstring_view clean = Cleaned(name, copy);
  if (clean.empty()) {
    out.Append(address);
    return;
  }
  std::wstring quoted;
  std::wstring_view phrase = clean;
  if (!IsAtoms(clean) || clean.find(L"  ") != std::wstring_view::npos) {
    quoted = Quoted(clean);
    phrase = quoted;
  }
  if (NeedsEncoding(clean) || column + phrase.size() > kLineLength) {
    column = AppendEncodedWords(clean, column, out);
  } else {
    AppendAscii(phrase, out);
    column += phrase.size();
  }
  out.Append(column + address.size() + 3 > kLineLength ? kFold : " ");
  out.Append("<");
  out.Append(address);
  out.Append(">");
}

}  // namespace pxscheduler
