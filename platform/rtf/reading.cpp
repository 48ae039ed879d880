#include "platform/rtf/reading.h"

#include <algorithm>
#include <utility>

#include "platform/rtf/hyperlink_field.h"
#include "platform/rtf/rtf_reader.h"
#include "platform/rtf/symbol_fonts.h"

namespace pxscheduler {
namespace {

// Groups deeper than this are read, but what they change stays changed after them.
constexpr std::size_t kDeepestSavedGroup = 10'000;
constexpr std::size_t kMostFonts = 4'096;

bool IsAscii(std::string_view bytes) {
  return std::ranges::all_of(bytes,
                             [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

bool IsControlCharacter(wchar_t character) {
  return (character < L' ' && character != L'\t' && character != L'\n') ||
         (character >= 0x7F && character < 0xA0) || character == 0xFFFE || character == 0xFFFF;
}

// The Windows code page of a character set number (RTF 1.9.1, "\fcharset"); 0 for the document's.
std::int32_t CodePageOfCharset(std::int32_t charset) {
  static constexpr std::array<std::pair<std::int32_t, std::int32_t>, 20> kPages = {
      {{0, 1252},   {77, 10000}, {78, 932},   {128, 932},  {129, 949},  {130, 1361}, {134, 936},
       {136, 950},  {161, 1253}, {162, 1254}, {163, 1258}, {177, 1255}, {178, 1256}, {186, 1257},
       {204, 1251}, {222, 874},  {238, 1250}, {254, 437},  {255, 850},  {256, 10000}}};
  const auto* found =
      std::ranges::find(kPages, charset, &std::pair<std::int32_t, std::int32_t>::first);
  return found == kPages.end() ? 0 : found->second;
}

}  // namespace

Reading::Reading(std::string_view bytes, const CodePages& code_pages)
    : tokens_(bytes), code_pages_(code_pages), document_code_page_(&code_pages.Ansi()) {
  document.text.reserve(bytes.size());  // pages that no text reaches cost nothing
  words_.reserve(600);
  AddCharacterWords(words_);
  AddParagraphWords(words_);
  AddTableWords(words_);
  AddHeaderWords(words_);
  AddListWords(words_);
  AddDestinationWords(words_);
}

const CodePage* Reading::CodePageNumber(std::int32_t number) {
  const auto [position, added] = code_pages_by_number_.try_emplace(number);
  if (added) {
    const std::string digits = std::to_string(number);
    if (number == 10000)
      position->second = code_pages_.Find("macintosh");
    else if (number == 65001)
      position->second = code_pages_.Find("UTF-8");
    else
      position->second = code_pages_.Find("windows-" + digits);
    if (position->second == nullptr) position->second = code_pages_.Find("cp" + digits);
  }
  return position->second.get();
}

Colour Reading::ColourNumber(std::int32_t number) const {
  const auto index = static_cast<std::size_t>(number);
  return number >= 0 && index < colours.size() ? colours[index] : kAutomatic;
}

Border* Reading::BorderOf(Side side) {
  switch (border_target.owner) {
    case BorderTarget::Owner::kParagraph:
      return &state.paragraph.borders.at(side);
    case BorderTarget::Owner::kCell:
      return &Row().cell.borders.at(side);
    case BorderTarget::Owner::kRow:
      return &Row().borders.at(side);
    case BorderTarget::Owner::kNothing:
      break;
  }
  return nullptr;
}

void Reading::Begin(Destination destination) {
  if (state.destination == Destination::kSkip || unsaved_groups_ > 0) return;
  state.destination = destination;
  state.began_destination = true;
  captured.clear();
  if (destination == Destination::kPicture) picture = {};
}

void Reading::BeginStory(DocumentBuilder::StoryKind kind) {
  if (!InBody() && state.destination != Destination::kSkipText) return;
  if (unsaved_groups_ > 0) return;
  Flush();
  state.destination = Destination::kText;
  // Content that is nested deeper becomes part of the content around it.
  if (builder.InDeepestStory()) return;
  builder.BeginStory(kind);
  state.began_story = true;
  ResetParagraph();
  ResetCharacter();
}

void Reading::ResetCharacter() {
  state.character = {};
  SetFont(default_font);
}

void Reading::ResetParagraph() {
  state.paragraph = {};
  state.table_depth = 0;
  paragraph_pattern = 0;
  tab_stop = {};
}

void Reading::SetFont(std::int32_t number) {
  const auto found = fonts.find(number);
  state.font = found == fonts.end() ? FontEntry{} : found->second;
  state.character.font = state.font.index;
}

void Reading::StartGroup() {
  if (unsaved_groups_ > 0 || groups_.size() == kDeepestSavedGroup) {
    ++unsaved_groups_;
    return;
  }
  groups_.push_back(state);
  state.began_destination = false;
  state.began_story = false;
  state.began_field = false;
}

void Reading::EndGroup() {
  if (unsaved_groups_ > 0) {
    --unsaved_groups_;
    return;
  }
  if (groups_.empty()) return;
  if (state.began_destination) EndDestination(state.destination);
  if (state.began_story) builder.EndStory(state.paragraph, state.character);
  if (state.began_field && !fields.empty()) fields.pop_back();
  const std::uint16_t list_number = state.paragraph.list;
  const bool list_given = state.began_destination && state.destination == Destination::kOldList;
  state = groups_.back();
  groups_.pop_back();
  if (list_given) state.paragraph.list = list_number;
}

bool Reading::ShowsObjects() const {
  const Destination around = groups_.back().destination;
  return around == Destination::kText || around == Destination::kMarker ||
         around == Destination::kSkipText || around == Destination::kPropertyValue;
}

void Reading::BeginField() {
  if (unsaved_groups_ > 0 || state.began_field) return;
  fields.emplace_back();
  state.began_field = true;
}

void Reading::BeginUnicodeText() {
  if (unsaved_groups_ > 0 || groups_.size() < 2) return;
  if (groups_.back().destination != Destination::kSkipText) return;
  state.destination = groups_[groups_.size() - 2].destination;
}

void Reading::EndDestination(Destination destination) {
  switch (destination) {
    case Destination::kMarker:
      builder.EndMarker();
      break;
    case Destination::kFontTable:
      EndFont();
      groups_.back().font = {};
      if (const auto found = fonts.find(default_font); found != fonts.end()) {
        groups_.back().font = found->second;
        groups_.back().character.font = found->second.index;
      }
      break;
    case Destination::kFieldInstruction:
      EndField();
      break;
    case Destination::kPicture:
      EndPicture();
      break;
    case Destination::kBookmark:
      if (!captured.empty() && ShowsObjects()) builder.AppendBookmark(std::exchange(captured, {}));
      break;
    case Destination::kPropertyName:
      property_name = std::exchange(captured, {});
      break;
    case Destination::kPropertyValue:
      if (property_name == L"wzDescription") picture.description = captured;
      break;
    case Destination::kLevelText:
      EndLevelText(*this);
      break;
    case Destination::kList:
      lists_by_id[list.id] = list.list;
      break;
    case Destination::kListOverride:
      EndListOverride(*this);
      break;
    case Destination::kTextBefore:
      old_list.before = std::exchange(captured, {});
      break;
    case Destination::kTextAfter:
      old_list.after = std::exchange(captured, {});
      break;
    case Destination::kOldList:
      EndOldList(*this);
      break;
    default:
      break;
  }
}

void Reading::EndFont() {
  if (font.name.empty() && font.charset < 0) return;
  FontEntry entry;
  const std::int32_t page = font.code_page > 0 ? font.code_page : CodePageOfCharset(font.charset);
  if (page > 0) entry.code_page = CodePageNumber(page);
  entry.symbols = SymbolSetOf(font.name, font.charset == 2);
  if (entry.symbols == SymbolSet::kNone && !font.name.empty()) {
    const auto known = std::ranges::find(document.fonts, font.name, &Font::name);
    entry.index = static_cast<std::uint16_t>(known - document.fonts.begin());
    if (known == document.fonts.end()) {
      if (document.fonts.size() < kMostFonts)
        document.fonts.push_back({font.name, font.family});
      else
        entry.index = 0;
    }
  }
  fonts[font.number] = entry;
  font = {};
}

void Reading::EndPicture() {
  PictureInProgress ended = std::exchange(picture, {});
  if (!ShowsObjects() || state.character.hidden) return;
  FinishedPicture finished = FinishPicture(std::move(ended));
  if (finished.problem) ++document.picture_problems[*finished.problem];
  if (finished.picture)
    builder.AppendPicture(*std::move(finished.picture), state.character, state.link);
}

void Reading::EndStyle() {
  std::wstring name = std::exchange(style.name, {});
  std::uint8_t heading = state.paragraph.heading;
  for (wchar_t& letter : name)
    if (letter >= L'A' && letter <= L'Z') letter = static_cast<wchar_t>(letter | 0x20);
  if (name.size() == 9 && name.starts_with(L"heading ") && name[8] >= L'1' && name[8] <= L'6')
    heading = static_cast<std::uint8_t>(name[8] - L'0');
  if (heading > 0) heading_styles[style.number] = heading;
}

void Reading::EndField() {
  if (fields.empty()) return;
  const std::wstring address = HyperlinkAddress(std::exchange(fields.back().instruction, {}));
  if (address.empty()) return;
  if (document.links.empty() || document.links.back().address != address)
    document.links.push_back({address});
  fields.back().link = static_cast<std::uint32_t>(document.links.size());
}

void Reading::AppendText(std::wstring_view text) {
  Flush();
  Take(text);
}

void Reading::AppendUnicode(std::int32_t unit) {
  Flush();
  const auto code = static_cast<char32_t>(unit < 0 ? unit + 0x10000 : unit);
  fallback_to_skip_ = state.unicode_fallback;
  const char32_t high = std::exchange(high_surrogate_, 0);
  if (code >= 0xD800 && code < 0xDC00) {
    high_surrogate_ = code;
    return;
  }
  if (code >= 0xDC00 && code < 0xE000) {
    const char32_t whole = 0x10000 + ((high - 0xD800) << 10) + (code - 0xDC00);
    if (high == 0) {
      Take(L"\uFFFD");
    } else if constexpr (sizeof(wchar_t) == 2) {
      Take(std::wstring{static_cast<wchar_t>(high), static_cast<wchar_t>(code)});
    } else {
      Take(std::wstring(1, static_cast<wchar_t>(whole)));
    }
    return;
  }
  if (code == 0 || code > 0x10FFFF) return;
  // Symbol fonts have their characters in a private range.
  if (code >= 0xF000 && code <= 0xF0FF)
    Take(
        SymbolText(state.font.symbols == SymbolSet::kNone ? SymbolSet::kSymbol : state.font.symbols,
                   static_cast<unsigned char>(code & 0xFF)));
  else
    Take(std::wstring(1, static_cast<wchar_t>(code)));
}

void Reading::HandleBytes(std::string_view bytes) {
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

void Reading::Flush() {
  if (pending_.empty()) return;
  wide_.clear();
  if (state.font.symbols != SymbolSet::kNone && InBody()) {
    for (const char byte : pending_)
      wide_ += SymbolText(state.font.symbols, static_cast<unsigned char>(byte));
  } else if (IsAscii(pending_)) {
    wide_.assign(pending_.begin(), pending_.end());
  } else {
    const CodePage* page = state.font.code_page;
    wide_ = (page == nullptr ? *document_code_page_ : *page).FromBytes(pending_);
  }
  pending_.clear();
  Take(wide_);
}

void Reading::Take(std::wstring_view text) {
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
      for (const wchar_t character : text) {
        if (character == L';')
          EndFont();
        else if (!IsControlCharacter(character))
          font.name += character;
      }
      break;
    case Destination::kColourTable:
      for (const wchar_t character : text) {
        if (character != L';') continue;
        colours.push_back(colour.given ? colour.rgb : kAutomatic);
        colour = {};
      }
      break;
    case Destination::kStyleSheet:
      for (const wchar_t character : text) {
        if (character == L';')
          EndStyle();
        else
          style.name += character;
      }
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

void Reading::EndParagraph() {
  Flush();
  if (!InBody()) return;
  ParagraphFormat format = state.paragraph;
  if (page_break_pending_) format.page_break_before = true;
  page_break_pending_ = false;
  builder.EndParagraph(format, state.character, state.table_depth);
}

void Reading::BreakPage() {
  if (!InBody()) return;
  if (builder.HasContent()) EndParagraph();
  page_break_pending_ = state.table_depth == 0;
}

void Reading::HandleSymbol(char symbol) {
  if (symbol == '*') {
    ignorable_ = true;
    return;
  }
  if (symbol == '\r' || symbol == '\n') {
    EndParagraph();
    return;
  }
  if (fallback_to_skip_ > 0) {
    --fallback_to_skip_;
    return;
  }
  switch (symbol) {
    case '\\':
    case '{':
    case '}':
      HandleBytes({&symbol, 1});
      break;
    case '~':
      AppendText(L"\u00A0");
      break;
    case '-':
      AppendText(L"\u00AD");
      break;
    case '_':
      AppendText(L"\u2011");
      break;
    case '\t':
      AppendText(L"\t");
      break;
    default:
      break;
  }
}

void Reading::HandleWord(const RtfToken& token) {
  const bool ignorable = std::exchange(ignorable_, false);
  if (state.destination == Destination::kSkip) return;
  const auto found = words_.find(token.text);
  if (ignorable && (found == words_.end() || !found->second.destination)) {
    Begin(Destination::kSkip);
    return;
  }
  if (found != words_.end()) found->second.apply(*this, {token.value});
}

Document Reading::Finish() {
  if (builder.HasContent()) EndParagraph();
  builder.Finish(state.paragraph, state.character);
  if (landscape && document.page.width < document.page.height)
    std::swap(document.page.width, document.page.height);
  return std::move(document);
}

// The document ends with its outermost group; word processors do not look at what follows either.
Document Reading::Read() {
  for (;;) {
    const RtfToken token = tokens_.Next();
    const bool bytes = token.kind == RtfToken::Kind::kText || token.kind == RtfToken::Kind::kByte;
    if (!bytes && token.kind != RtfToken::Kind::kControlSymbol) {
      Flush();
      fallback_to_skip_ = 0;
    }
    switch (token.kind) {
      case RtfToken::Kind::kGroupStart:
        StartGroup();
        break;
      case RtfToken::Kind::kGroupEnd:
        if (groups_.size() == 1 && unsaved_groups_ == 0) return Finish();
        EndGroup();
        break;
      case RtfToken::Kind::kControlWord:
        HandleWord(token);
        break;
      case RtfToken::Kind::kControlSymbol:
        HandleSymbol(token.text.front());
        break;
      case RtfToken::Kind::kByte: {
        const char byte = static_cast<char>(token.value.value_or(0));
        HandleBytes({&byte, 1});
        break;
      }
      case RtfToken::Kind::kText:
        HandleBytes(token.text);
        break;
      case RtfToken::Kind::kBinary:
        if (state.destination == Destination::kPicture) picture.AppendBytes(token.text);
        break;
      case RtfToken::Kind::kEnd:
        return Finish();
    }
    if (token.kind != RtfToken::Kind::kControlSymbol) ignorable_ = false;
  }
}

Document ReadRtf(std::string_view bytes, const CodePages& code_pages) {
  return Reading(bytes, code_pages).Read();
}

}  // namespace pxscheduler
