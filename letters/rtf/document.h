#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace pxscheduler {

// A word-processor document in memory: flat lists that refer to each other by index, so that its
// size stays in proportion to the file's and nothing that works on it has to recurse. Lengths are
// twips (twentieths of a point) unless said otherwise.

using Colour = std::uint32_t;                     // 0xRRGGBB
inline constexpr Colour kAutomatic = 0xFFFFFFFF;  // the reader's own: black on white

enum class FontFamily : std::uint8_t { kUnknown, kSerif, kSansSerif, kMonospace, kScript };

struct Font {
  std::wstring name;
  FontFamily family = FontFamily::kUnknown;
};

enum class TextPosition : std::uint8_t { kBaseline, kSuperscript, kSubscript };

struct CharacterFormat {
  std::uint16_t font = 0;  // index into Document::fonts
  std::uint16_t half_points = 24;
  Colour colour = kAutomatic;
  Colour background = kAutomatic;
  TextPosition position = TextPosition::kBaseline;
  bool bold = false;
  bool italic = false;
  bool underline = false;
  bool strike = false;
  bool small_capitals = false;
  bool capitals = false;
  bool hidden = false;

  // NOLINTNEXTLINE(modernize-use-nullptr): it looks into the comparison that the compiler writes
  friend auto operator<=>(const CharacterFormat&, const CharacterFormat&) = default;
};

enum class BorderStyle : std::uint8_t { kNone, kSolid, kDouble, kDotted, kDashed };

struct Border {
  BorderStyle style = BorderStyle::kNone;
  std::uint16_t width = 0;
  std::uint16_t space = 0;  // between the border and the text
  Colour colour = kAutomatic;

  // NOLINTNEXTLINE(modernize-use-nullptr): it looks into the comparison that the compiler writes
  friend auto operator<=>(const Border&, const Border&) = default;
};

enum Side : std::uint8_t { kTop, kRight, kBottom, kLeft };
using Borders = std::array<Border, 4>;  // by side

enum class Alignment : std::uint8_t { kLeft, kCentre, kRight, kJustified };
enum class LineSpacing : std::uint8_t { kNormal, kMultiple, kAtLeast, kExact };

enum class TabKind : std::uint8_t { kLeft, kCentre, kRight, kDecimal };
enum class TabLeader : std::uint8_t { kNone, kDots, kHyphens, kLine, kThickLine, kDoubleLine };

struct TabStop {
  std::int32_t position = 0;  // from the left page margin
  TabKind kind = TabKind::kLeft;
  TabLeader leader = TabLeader::kNone;  // drawn along the tab

  // NOLINTNEXTLINE(modernize-use-nullptr): it looks into the comparison that the compiler writes
  friend auto operator<=>(const TabStop&, const TabStop&) = default;
};

struct TabStops {
  std::array<TabStop, 12> stops{};  // by ascending position
  std::uint8_t count = 0;

  // NOLINTNEXTLINE(modernize-use-nullptr): it looks into the comparison that the compiler writes
  friend auto operator<=>(const TabStops&, const TabStops&) = default;
};

struct ParagraphFormat {
  std::int32_t left_indent = 0;
  std::int32_t right_indent = 0;
  std::int32_t first_indent = 0;  // of the first line, relative to left_indent
  std::int32_t space_before = 0;
  std::int32_t space_after = 0;
  std::int32_t line_height = 0;  // twips, or 240ths of a line for kMultiple
  Colour shading = kAutomatic;
  Borders borders;
  TabStops tabs;
  std::int32_t style = 0;  // its number in the document
  std::uint16_t list = 0;  // 1-based index into Document::lists, 0 for no list item
  std::uint8_t list_level = 0;
  std::uint8_t heading = 0;  // 1 to 6, 0 for body text
  Alignment alignment = Alignment::kLeft;
  LineSpacing line_spacing = LineSpacing::kNormal;
  bool right_to_left = false;
  bool page_break_before = false;
  bool spaced_from_other_styles_only = false;  // no space beside a paragraph of the same style

  // NOLINTNEXTLINE(modernize-use-nullptr): it looks into the comparison that the compiler writes
  friend auto operator<=>(const ParagraphFormat&, const ParagraphFormat&) = default;
};

struct Run {
  enum class Kind : std::uint8_t { kText, kPicture, kBookmark };

  Kind kind = Kind::kText;
  std::uint32_t format = 0;  // index into Document::character_formats
  std::uint32_t link = 0;    // 1-based index into Document::links, 0 for none
  std::uint32_t begin = 0;   // kText: position in Document::text; else index of picture or bookmark
  std::uint32_t length = 0;  // of the text
};

struct Paragraph {
  std::uint32_t format = 0;       // index into Document::paragraph_formats
  std::uint32_t mark_format = 0;  // the character format of its end, which sizes an empty one
  std::uint32_t first_run = 0;    // index into Document::runs
  std::uint32_t run_count = 0;
  std::int32_t list_number = 0;  // that the document shows for an item, 0 where it does not say
};

enum class VerticalAlignment : std::uint8_t { kTop, kMiddle, kBottom };

struct CellFormat {
  std::int32_t right_edge = 0;  // from the left page margin
  Borders borders;
  Colour shading = kAutomatic;
  VerticalAlignment alignment = VerticalAlignment::kTop;
  bool joins_left = false;   // merged with the cell to its left
  bool joins_above = false;  // merged with the cell above
};

struct RowFormat {
  std::int32_t left_edge = 0;
  std::int32_t height = 0;                              // at least; 0 for what the content needs
  std::array<std::int32_t, 4> padding{0, 108, 0, 108};  // of the cells, by side
  Alignment alignment = Alignment::kLeft;
  bool header = false;
  std::vector<CellFormat> cells;
};

// Content in reading order. A table is a start, rows of cells, and an end; cells hold blocks.
struct Block {
  enum class Kind : std::uint8_t {
    kParagraph,
    kTableStart,
    kRowStart,
    kCellStart,
    kCellEnd,
    kRowEnd,
    kTableEnd
  };

  Kind kind = Kind::kParagraph;
  std::uint32_t index = 0;  // kParagraph: into Document::paragraphs; kRowStart: into rows
};

struct Picture {
  std::string media_type;  // "image/png", "image/jpeg" or "image/bmp"
  std::string bytes;
  std::int32_t width = 0;  // as shown; 0 where the document does not say
  std::int32_t height = 0;
  std::wstring description;
};

// Why a picture is left out, or not shown as the document has it.
enum class PictureProblem : std::uint8_t {
  kMetafile,    // mail programs do not show WMF and EMF
  kTooLarge,    // more bytes than a message should carry
  kUnreadable,  // none of the known forms, or damaged
  kNotCropped,  // shown whole
};

struct ListLevel {
  // As in the "type" of an HTML list: '1', 'a', 'A', 'i', 'I'; 0 for bullets.
  wchar_t number_style = 0;
  std::wstring bullet;
  std::int32_t start = 1;
  // Whether number_style or bullet describes the marker completely. Where it does not, the marker
  // stays in the text of the paragraph, which is no list item.
  bool simple = false;

  friend bool operator==(const ListLevel&, const ListLevel&) = default;
};

struct List {
  std::array<ListLevel, 9> levels;
  bool counts_on = true;  // after other paragraphs have come between
};

struct Link {
  std::wstring address;

  friend bool operator==(const Link&, const Link&) = default;
};

// What the document records of its page, 0 where it does not.
struct PageLayout {
  std::int32_t width = 0;
  std::int32_t height = 0;
  std::int32_t left_margin = 0;
  std::int32_t top_margin = 0;
  std::int32_t right_margin = 0;
  std::int32_t bottom_margin = 0;
};

struct Document {
  // '\n' is a line break, '\t' a tab, U+00AD a place where a word may be divided.
  std::wstring text;
  std::vector<Font> fonts{{}};
  std::vector<CharacterFormat> character_formats;
  std::vector<ParagraphFormat> paragraph_formats;
  std::vector<Run> runs;
  std::vector<Paragraph> paragraphs;
  std::vector<RowFormat> rows;
  std::vector<Picture> pictures;
  std::map<PictureProblem, std::size_t> picture_problems;  // how many pictures have each
  std::vector<std::wstring> bookmarks;
  std::vector<Link> links;
  std::vector<List> lists;
  std::vector<Block> body;
  std::vector<Block> notes;
  std::int32_t default_tab = 720;
  bool spacing_collapses = false;  // the larger of two paragraphs' spaces counts, not their sum
  PageLayout page;
};

}  // namespace pxscheduler
