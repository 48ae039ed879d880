// Where destinations begin, and what their ends mean: the entry of a table, a picture, a field.
#include <algorithm>
#include <array>
#include <utility>

#include "letters/rtf/hyperlink_field.h"
#include "letters/rtf/rtf_parser.h"
#include "letters/rtf/symbol_fonts.h"
#include "text/ascii_case.h"

namespace pxscheduler {
namespace {

constexpr std::size_t kMostFonts = 4'096;

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

void RtfParser::Begin(Destination destination) {
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

void RtfParser::BeginStory(DocumentBuilder::StoryKind kind) {
  if (!InBody() && state.destination != Destination::kSkipText) return;
  if (unsaved_groups_ > 0) return;
  state.destination = Destination::kText;
  // Content that is nested deeper becomes part of the content around it.
  if (builder.InDeepestStory()) return;
  builder.BeginStory(kind);
  state.began_story = true;
  ResetParagraph();
  ResetCharacter();
}

void RtfParser::BeginField() {
  if (unsaved_groups_ > 0 || state.began_field) return;
  fields.emplace_back();
  state.began_field = true;
}

void RtfParser::BeginPicture() {
  const bool is_property = state.destination == Destination::kPropertyValue;
  Begin(Destination::kPicture);
  if (is_property && property_name != L"pib")
    state.picture_use = PictureUse::kNone;
  else
    state.picture_use = is_property && !shapes.empty() ? PictureUse::kShape : PictureUse::kText;
}

void RtfParser::BeginShape() {
  if (unsaved_groups_ > 0 || state.began_shape) return;
  Begin(Destination::kSkipText);
  shapes.emplace_back();
  state.began_shape = true;
}

void RtfParser::BeginUnicodeText() {
  if (unsaved_groups_ > 0 || groups_.size() < 2) return;
  if (groups_.back().destination != Destination::kSkipText) return;
  state.destination = groups_[groups_.size() - 2].destination;
}

bool RtfParser::ShowsObjects() const {
  const Destination around = groups_.back().destination;
  return around == Destination::kText || around == Destination::kMarker ||
         around == Destination::kSkipText || around == Destination::kPropertyValue;
}

void RtfParser::EndDestination() {
  switch (state.destination) {
    case Destination::kMarker:
      builder.EndMarker();
      break;
    case Destination::kFontTable:
      EndFont();
      groups_.back().font = FontNumber(default_font);
      groups_.back().character.font = groups_.back().font.index;
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
      EndProperty();
      break;
    case Destination::kLevelText:
      EndLevelText(*this);
      break;
    case Destination::kList:
      lists_by_id[list.id] = {list.list, 0};
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

void RtfParser::EndFont() {
  if (font.name.empty() && font.charset < 0) return;
  FontEntry entry;
  const std::int32_t page = font.code_page > 0 ? font.code_page : CodePageOfCharset(font.charset);
  entry.code_page = CodePageNumber(page);
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

void RtfParser::EndPicture() {
  PictureInProgress ended = std::exchange(picture, {});
  if (!ShowsObjects() || state.picture_use == PictureUse::kNone) return;
  if (state.picture_use == PictureUse::kShape)
    shapes.back().picture = std::move(ended);
  else
    ShowPicture(std::move(ended));
}

void RtfParser::EndProperty() {
  if (state.in_picture_properties) {
    if (property_name == L"wzDescription") picture.description = captured;
  } else if (!shapes.empty()) {
    shapes.back().SetProperty(property_name, captured);
  }
}

void RtfParser::EndShape() {
  Shape ended = std::move(shapes.back());
  shapes.pop_back();
  if (ShowsObjects()) ShowPicture(std::move(ended).ShownPicture());
}

void RtfParser::ShowPicture(PictureInProgress shown) {
  if (state.character.hidden) return;
  FinishedPicture finished = FinishPicture(std::move(shown));
  if (finished.problem) ++document.picture_problems[*finished.problem];
  if (finished.picture)
    builder.AppendPicture(*std::move(finished.picture), state.character, state.link);
}

void RtfParser::EndStyle() {
  const std::wstring name = LowerAscii(std::exchange(style.name, {}));
  std::uint8_t heading = state.paragraph.heading;
  if (name.size() == 9 && name.starts_with(L"heading ") && name[8] >= L'1' && name[8] <= L'6')
    heading = static_cast<std::uint8_t>(name[8] - L'0');
  if (heading > 0) heading_styles[style.number] = heading;
}

void RtfParser::EndField() {
  if (fields.empty()) return;
  const std::wstring address = HyperlinkAddress(std::exchange(fields.back().instruction, {}));
  if (address.empty()) return;
  if (document.links.empty() || document.links.back().address != address)
    document.links.push_back({address});
  fields.back().link = static_cast<std::uint32_t>(document.links.size());
}

}  // namespace pxscheduler
