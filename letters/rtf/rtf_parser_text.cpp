// How the bytes of the file become text, and where that text goes.
#include <algorithm>
#include <utility>

#include "letters/rtf/rtf_parser.h"
#include "letters/rtf/symbol_fonts.h"
#include "text/utf16.h"

namespace pxscheduler {
namespace {

bool IsAscii(std::string_view bytes) {
  return std::ranges::all_of(bytes,
                             [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

bool IsControlCharacter(wchar_t character) {
  return (character < L' ' && character != L'\t' && character != L'\n') ||
         (character >= 0x7F && character < 0xA0) || character == 0xFFFE || character == 0xFFFF;
}

}  // namespace

const CodePage* RtfParser::CodePageNumber(std::int32_t number) {
  if (number <= 0) return nullptr;
  const auto [position, added] = code_pages_by_number_.try_emplace(number);
  if (added) position->second = code_pages_.Find("windows-" + std::to_string(number));
  return position->second.get();
}

FontEntry RtfParser::FontNumber(std::int32_t number) const {
  const auto found = fonts.find(number);
  return found == fonts.end() ? FontEntry{} : found->second;
}

void RtfParser::SetFont(std::int32_t number) {
  state.font = FontNumber(number);
  state.character.font = state.font.index;
}

void RtfParser::AppendText(std::wstring_view text) {
  Flush();
  PutText(text);
}

void RtfParser::AppendUnicode(std::int32_t unit) {
  const auto code = static_cast<char32_t>(unit < 0 ? unit + 0x10000 : unit);
  fallback_to_skip_ = state.unicode_fallback;
  const char32_t high = std::exchange(high_surrogate_, 0);
  if (IsHighSurrogate(code)) {
    high_surrogate_ = code;
    return;
  }
  if (IsLowSurrogate(code)) {
    if (high == 0)
      PutText(L"\uFFFD");
    else if constexpr (sizeof(wchar_t) == 2)
      PutText(std::wstring{static_cast<wchar_t>(high), static_cast<wchar_t>(code)});
    else
      PutText(std::wstring(1, static_cast<wchar_t>(JoinSurrogates(high, code))));
    return;
  }
  if (code == 0 || code > 0x10FFFF) return;
  // Symbol fonts have their characters in a private range.
  if (code >= 0xF000 && code <= 0xF0FF)
    PutText(
        SymbolText(state.font.symbols == SymbolSet::kNone ? SymbolSet::kSymbol : state.font.symbols,
                   static_cast<unsigned char>(code & 0xFF)));
  else
    PutText(std::wstring(1, static_cast<wchar_t>(code)));
}

void RtfParser::HandleBytes(std::string_view bytes) {
  if (fallback_to_skip_ > 0) {
    const auto skipped = std::min(bytes.size(), static_cast<std::size_t>(fallback_to_skip_));
    bytes.remove_prefix(skipped);
    fallback_to_skip_ -= static_cast<std::int32_t>(skipped);
  }
  if (bytes.empty() || state.destination == Destination::kSkip ||
      state.destination == Destination::kSkipText)
    return;
  if (state.destination == Destination::kPicture)
    picture.AppendHex(bytes);
  else
    pending_ += bytes;
}

void RtfParser::Flush() {
  if (pending_.empty()) return;
  decoded_.clear();
  if (state.font.symbols != SymbolSet::kNone && InBody()) {
    for (const char byte : pending_)
      decoded_ += SymbolText(state.font.symbols, static_cast<unsigned char>(byte));
  } else if (IsAscii(pending_)) {
    decoded_.assign(pending_.begin(), pending_.end());
  } else {
    const CodePage* page = state.font.code_page;
    decoded_ = (page == nullptr ? *document_code_page_ : *page).FromBytes(pending_);
  }
  pending_.clear();
  PutText(decoded_);
}

void RtfParser::PutText(std::wstring_view text) {
  switch (state.destination) {
    case Destination::kText:
    case Destination::kMarker:
      if (std::ranges::any_of(text, IsControlCharacter)) {
        std::wstring clean(text);
        std::erase_if(clean, IsControlCharacter);
        builder.AppendText(clean, state.character, state.link);
      } else {
        builder.AppendText(text, state.character, state.link);
      }
      break;
    case Destination::kFontTable:
      for (const wchar_t character : text)
        if (character == L';')
          EndFont();
        else if (!IsControlCharacter(character))
          font.name += character;
      break;
    case Destination::kColourTable:
      for (const wchar_t character : text) {
        if (character != L';') continue;
        colours.push_back(colour.given ? colour.rgb : kAutomatic);
        colour = {};
      }
      break;
    case Destination::kStyleSheet:
      for (const wchar_t character : text)
        if (character == L';')
          EndStyle();
        else
          style.name += character;
      break;
    case Destination::kFieldInstruction:
      if (!fields.empty()) fields.back().instruction += text;
      break;
    case Destination::kLevelText:
    case Destination::kTextBefore:
    case Destination::kTextAfter:
    case Destination::kBookmark:
    case Destination::kPropertyName:
    case Destination::kPropertyValue:
      captured += text;
      break;
    default:
      break;
  }
}

}  // namespace pxscheduler
