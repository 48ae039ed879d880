#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "letters/rtf/control_words.h"
#include "letters/rtf/document.h"
#include "letters/rtf/document_builder.h"
#include "letters/rtf/picture_reader.h"
#include "letters/rtf/rtf_tokens.h"
#include "letters/rtf/shape.h"
#include "letters/rtf/symbol_fonts.h"
#include "platform/code_page.h"

namespace pxscheduler {

enum class Destination : std::uint8_t {
  kText,
  kSkip,      // the rest of the group is skipped
  kSkipText,  // its text is skipped, destinations inside are not
  kMarker,    // the marker of a list item
  kFontTable,
  kColourTable,
  kStyleSheet,
  kFieldInstruction,
  kPicture,
  kList,          // {\list ...}
  kListOverride,  // {\listoverride ...}
  kLevelText,     // {\leveltext ...}
  kOldList,       // {\*\pn ...}
  kTextBefore,    // {\pntxtb ...}
  kTextAfter,     // {\pntxta ...}
  kBookmark,
  kPropertyName,   // {\sn ...} of a shape or picture
  kPropertyValue,  // {\sv ...}
};

struct FontEntry {
  std::uint16_t index = 0;              // into Document::fonts
  const CodePage* code_page = nullptr;  // null for the document's
  SymbolSet symbols = SymbolSet::kNone;
};

enum class PictureUse : std::uint8_t { kText, kShape, kNone };

// What a group restores at its end.
struct GroupState {
  CharacterFormat character;
  ParagraphFormat paragraph;
  FontEntry font;
  std::uint32_t link = 0;
  std::int32_t table_depth = 0;
  std::int32_t unicode_fallback = 1;  // characters after \u that stand for the same
  Destination destination = Destination::kText;
  PictureUse picture_use = PictureUse::kText;  // of the open picture
  bool began_destination = false;              // this group, not one around it
  bool began_story = false;
  bool began_field = false;
  bool began_shape = false;
  bool in_picture_properties = false;
  bool nested_row = false;  // row properties are those of a nested table
};

// The borders that \brdrs and the like change.
struct BorderTarget {
  enum class Owner : std::uint8_t { kParagraph, kCell, kRow };
  Owner owner = Owner::kParagraph;
  std::uint8_t sides = 0;  // bit mask by Side
};

struct RowInProgress {
  RowFormat row;
  Borders borders;  // of cells that have none of their own
  CellFormat cell;
  std::int32_t cell_pattern = 0;  // hundredths of a percent
};

// The ends of the destinations that describe lists (list_words.cpp).
void EndLevelText(RtfParser& parser);
void EndListOverride(RtfParser& parser);
void EndOldList(RtfParser& parser);

// Reads an RTF file word by word. The functions behind the control words (control_words.h) change
// its public state.
class RtfParser {
 public:
  RtfParser(std::string_view bytes, const CodePages& code_pages);

  Document Read();

  // Sends the text of the open group to the destination. Without effect in one that is skipped.
  void Begin(Destination destination);
  void BeginStory(DocumentBuilder::StoryKind kind);
  void BeginField();
  void BeginPicture();
  void BeginShape();
  // {\upr{text for old readers}{\*\ud{the same in Unicode}}}: the second text counts.
  void BeginUnicodeText();
  void AppendText(std::wstring_view text);
  void EndParagraph();
  void BreakPage();
  void BreakColumn();
  void BreakSection();
  // Whether the section that has just begun continues the page of the one before.
  void SetSectionContinues(bool continues);
  // The format of the paragraph that ends here, with the page break that is due before it.
  ParagraphFormat TakeParagraphFormat();
  void AppendUnicode(std::int32_t unit);
  void ResetCharacter();
  void ResetParagraph();
  FontEntry FontNumber(std::int32_t number) const;
  void SetFont(std::int32_t number);
  void SetDocumentCodePage(const CodePage* page) {
    if (page != nullptr) document_code_page_ = page;
  }
  // Null for 0, for a negative one and for one that the machine does not know.
  const CodePage* CodePageNumber(std::int32_t number);
  Colour ColourNumber(std::int32_t number) const;
  RowInProgress& Row() { return rows_[state.nested_row ? 1 : 0]; }
  Borders& TargetBorders();
  bool InBody() const {
    return state.destination == Destination::kText || state.destination == Destination::kMarker;
  }

  Document document;
  DocumentBuilder builder{document};
  GroupState state;
  BorderTarget border_target;
  TabStop tab_stop;  // what is known of the next one; its position comes last

  // The header's tables while they are read, by the numbers that the document refers to them with.
  struct {
    std::int32_t number = 0;
    std::int32_t charset = -1;
    std::int32_t code_page = 0;
    FontFamily family = FontFamily::kUnknown;
    std::wstring name;
  } font;
  std::unordered_map<std::int32_t, FontEntry> fonts;
  std::int32_t default_font = 0;
  struct {
    std::uint32_t rgb = 0;
    bool given = false;
  } colour;
  std::vector<Colour> colours;
  struct {
    std::int32_t number = 0;
    std::wstring name;
  } style;
  std::unordered_map<std::int32_t, std::uint8_t> heading_styles;
  struct {
    List list;
    std::size_t levels = 0;
    std::int32_t id = 0;
    std::int32_t override_number = 0;
    std::array<bool, 9> restarts{};  // levels of an override that count from a number of their own
  } list;
  struct ListEntry {
    List list;
    std::uint16_t index = 0;  // as ParagraphFormat::list, 0 as long as no override refers to it
  };
  std::unordered_map<std::int32_t, ListEntry> lists_by_id;
  std::unordered_map<std::int32_t, std::uint16_t> list_overrides;  // as ParagraphFormat::list
  struct {
    ListLevel level;
    std::int32_t depth = 0;  // 1 for the outermost of several levels, 0 for a list of one
    bool bullet = false;
    std::wstring before;
    std::wstring after;
  } old_list;
  std::map<std::wstring, std::uint16_t> old_lists;  // those of one level
  std::uint16_t old_outline = 0;                    // the list of several levels that is open

  struct Field {
    std::wstring instruction;
    std::uint32_t link = 0;
  };
  std::vector<Field> fields;
  PictureInProgress picture;
  std::vector<Shape> shapes;  // the open ones
  std::wstring property_name;
  std::wstring captured;  // the text of the destination that gathers some
  std::uint32_t notes = 0;
  bool landscape = false;

 private:
  void StartGroup();
  void EndGroup();
  void EndDestination();
  // Whether a picture or a bookmark stands where text is shown, or where its text alone is not.
  bool ShowsObjects() const;
  void HandleWord(const RtfToken& token);
  void HandleSymbol(char symbol);
  void HandleBytes(std::string_view bytes);
  Document Finish();
  // Decodes the bytes that are pending.
  void Flush();
  // Appends text to what the destination gathers.
  void PutText(std::wstring_view text);
  void EndFont();
  void EndPicture();
  void EndProperty();
  void EndShape();
  void ShowPicture(PictureInProgress shown);
  void EndStyle();
  void EndField();

  RtfTokens tokens_;
  const CodePages& code_pages_;
  const CodePage* document_code_page_;
  std::unordered_map<std::int32_t, std::unique_ptr<CodePage>> code_pages_by_number_;
  ControlWords words_;
  std::vector<GroupState> groups_;
  std::size_t unsaved_groups_ = 0;
  std::size_t skipped_group_ = 0;  // how many of them there were where one began to be passed over
  Destination around_skipped_ = Destination::kText;
  std::array<RowInProgress, 2> rows_;
  std::string pending_;                // bytes not yet decoded
  std::wstring decoded_;               // room for them, used again and again
  std::int32_t fallback_to_skip_ = 0;  // characters
  char32_t high_surrogate_ = 0;
  bool ignorable_ = false;  // "\*" has been read
  bool page_break_pending_ = false;
  bool at_section_start_ = false;  // of a section but the first
  bool section_continues_ = false;
};

// Makes a destination the action of a control word.
template <Destination kDestination>
void Begin(RtfParser& parser, const Parameter&) {
  parser.Begin(kDestination);
}

}  // namespace pxscheduler
