#include "letters/rtf/rtf_parser.h"

#include <utility>

#include "letters/rtf/rtf_reader.h"

namespace pxscheduler {
namespace {

// Groups deeper than this are read, but what they change stays changed after them, and their
// destinations are passed over.
constexpr std::size_t kDeepestSavedGroup = 10'000;

}  // namespace

RtfParser::RtfParser(std::string_view bytes, const CodePages& code_pages)
    : tokens_(bytes), code_pages_(code_pages), document_code_page_(&code_pages.Ansi()) {
  document.text.reserve(bytes.size());  // pages that no text reaches cost nothing
  AddBorderWords(words_);
  AddCharacterWords(words_);
  AddDestinationWords(words_);
  AddHeaderWords(words_);
  AddListWords(words_);
  AddParagraphWords(words_);
  AddTableWords(words_);
}

Colour RtfParser::ColourNumber(std::int32_t number) const {
  const auto index = static_cast<std::size_t>(number);
  return number >= 0 && index < colours.size() ? colours[index] : kAutomatic;
}

Borders& RtfParser::TargetBorders() {
  switch (border_target.owner) {
    case BorderTarget::Owner::kCell:
      return Row().cell.borders;
    case BorderTarget::Owner::kRow:
      return Row().borders;
    case BorderTarget::Owner::kParagraph:
      break;
  }
  return state.paragraph.borders;
}

void RtfParser::ResetCharacter() {
  state.character = {};
  SetFont(default_font);
}

void RtfParser::ResetParagraph() {
  state.paragraph = {};
  state.table_depth = 0;
  tab_stop = {};
}

void RtfParser::StartGroup() {
  if (unsaved_groups_ > 0 || groups_.size() == kDeepestSavedGroup) {
    ++unsaved_groups_;
    return;
  }
  groups_.push_back(state);
  state.began_destination = false;
  state.began_story = false;
  state.began_field = false;
  state.began_shape = false;
}

void RtfParser::EndGroup() {
  if (unsaved_groups_ > 0) {
    if (unsaved_groups_-- == skipped_group_) {
      state.destination = around_skipped_;
      skipped_group_ = 0;
    }
    return;
  }
  if (groups_.empty()) return;
  if (state.began_destination) EndDestination();
  if (state.began_story) builder.EndStory(state.paragraph, state.character);
  if (state.began_field && !fields.empty()) fields.pop_back();
  if (state.began_shape) EndShape();
  const std::uint16_t list_number = state.paragraph.list;
  const std::uint8_t list_level = state.paragraph.list_level;
  const bool list_given = state.began_destination && state.destination == Destination::kOldList;
  state = groups_.back();
  groups_.pop_back();
  if (!list_given) return;
  state.paragraph.list = list_number;
  state.paragraph.list_level = list_level;
}

void RtfParser::EndParagraph() {
  Flush();
  if (!InBody()) return;
  builder.EndParagraph(TakeParagraphFormat(), state.character, state.table_depth);
}

ParagraphFormat RtfParser::TakeParagraphFormat() {
  ParagraphFormat format = state.paragraph;
  if (std::exchange(page_break_pending_, false)) format.page_break_before = true;
  at_section_start_ = false;
  return format;
}

void RtfParser::BreakPage() {
  if (!InBody()) return;
  if (builder.HasContent()) EndParagraph();
  page_break_pending_ = state.table_depth == 0;
  at_section_start_ = false;
}

// Columns are left out: what stands in the next one comes below.
void RtfParser::BreakColumn() {
  if (builder.HasContent()) EndParagraph();
}

void RtfParser::BreakSection() {
  if (!InBody()) return;
  if (builder.HasContent()) EndParagraph();
  at_section_start_ = true;
  SetSectionContinues(section_continues_);
}

void RtfParser::SetSectionContinues(bool continues) {
  section_continues_ = continues;
  if (at_section_start_) page_break_pending_ = !continues && state.table_depth == 0;
}

void RtfParser::HandleSymbol(char symbol) {
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

void RtfParser::HandleWord(const RtfToken& token) {
  const bool ignorable = std::exchange(ignorable_, false);
  if (state.destination == Destination::kSkip) return;
  const ControlWords::Entry* word = words_.Find(token.text);
  if (ignorable && (word == nullptr || !word->begins_destination))
    Begin(Destination::kSkip);
  else if (word != nullptr)
    word->action(*this, {token.value});
}

Document RtfParser::Finish() {
  if (builder.HasContent()) EndParagraph();
  builder.Finish(state.paragraph, state.character);
  if (landscape && document.page.width < document.page.height)
    std::swap(document.page.width, document.page.height);
  return std::move(document);
}

// The document ends with its outermost group; word processors do not look at what follows either.
Document RtfParser::Read() {
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
  return RtfParser(bytes, code_pages).Read();
}

}  // namespace pxscheduler
