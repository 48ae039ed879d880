#include "letters/rtf/reading.h"

#include <utility>

#include "letters/rtf/rtf_reader.h"

namespace pxscheduler {
namespace {

// Groups deeper than this are read, but what they change stays changed after them, and their
// destinations are passed over.
constexpr std::size_t kDeepestSavedGroup = 10'000;

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
  if (state.destination == Destination::kSkip) return;
  if (unsaved_groups_ > 0) {
    around_skipped_ = state.destination;
    skipped_group_ = unsaved_groups_;
    state.destination = Destination::kSkip;
    return;
  }
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

void Reading::StartGroup() {
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

void Reading::EndGroup() {
  if (unsaved_groups_ > 0) {
    if (unsaved_groups_-- == skipped_group_) {
      state.destination = around_skipped_;
      skipped_group_ = 0;
    }
    return;
  }
  if (groups_.empty()) return;
  if (state.began_destination) EndDestination(state.destination);
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

void Reading::BeginField() {
  if (unsaved_groups_ > 0 || state.began_field) return;
  fields.emplace_back();
  state.began_field = true;
}

void Reading::BeginPicture() {
  const bool is_property = state.destination == Destination::kPropertyValue;
  Begin(Destination::kPicture);
  if (is_property && property_name != L"pib")
    state.picture_use = PictureUse::kNone;
  else
    state.picture_use = is_property && !shapes.empty() ? PictureUse::kShape : PictureUse::kText;
}

void Reading::BeginShape() {
  if (unsaved_groups_ > 0 || state.began_shape) return;
  Begin(Destination::kSkipText);
  shapes.emplace_back();
  state.began_shape = true;
}

void Reading::BeginUnicodeText() {
  if (unsaved_groups_ > 0 || groups_.size() < 2) return;
  if (groups_.back().destination != Destination::kSkipText) return;
  state.destination = groups_[groups_.size() - 2].destination;
}

void Reading::EndParagraph() {
  Flush();
  if (!InBody()) return;
  builder.EndParagraph(TakeParagraphFormat(), state.character, state.table_depth);
}

ParagraphFormat Reading::TakeParagraphFormat() {
  ParagraphFormat format = state.paragraph;
  if (std::exchange(page_break_pending_, false)) format.page_break_before = true;
  at_section_start_ = false;
  return format;
}

void Reading::BreakPage() {
  if (!InBody()) return;
  if (builder.HasContent()) EndParagraph();
  page_break_pending_ = state.table_depth == 0;
  at_section_start_ = false;
}

// Columns are left out: what stands in the next one comes below.
void Reading::BreakColumn() {
  if (builder.HasContent()) EndParagraph();
}

void Reading::BreakSection() {
  if (!InBody()) return;
  if (builder.HasContent()) EndParagraph();
  at_section_start_ = true;
  SetSectionContinues(section_continues_);
}

void Reading::SetSectionContinues(bool continues) {
  section_continues_ = continues;
  if (at_section_start_) page_break_pending_ = !continues && state.table_depth == 0;
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
