#include "platform/html/html_writer.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/code_page.h"
#include "platform/html/css.h"
#include "platform/html/html_page.h"
#include "platform/html/inline_writer.h"
#include "platform/html/table_grid.h"

namespace pxscheduler {
namespace {

// The bullets that HTML's lists know by name; another one is given as it is.
std::string BulletStyle(const std::wstring& bullet) {
  static const std::map<std::wstring, std::string> names = {
      {L"\u2022", "disc"},   {L"\u25CF", "disc"},   {L"\u00B7", "disc"},   {L"o", "circle"},
      {L"\u25CB", "circle"}, {L"\u25E6", "circle"}, {L"\u25AA", "square"}, {L"\u25A0", "square"}};
  if (const auto found = names.find(bullet); found != names.end()) return found->second;
  if (bullet.empty() || bullet.find_first_of(L"'\"\\<>&;") != std::wstring::npos) return "disc";
  return "'" + ToUtf8(bullet) + "\u00A0'";
}

bool HasBox(const ParagraphFormat& format) {
  return format.shading != kAutomatic ||
         std::ranges::any_of(format.borders, [](const Border& border) {
           return border.style != BorderStyle::kNone;
         });
}

std::string_view AlignmentName(Alignment alignment) {
  switch (alignment) {
    case Alignment::kCentre:
      return "center";
    case Alignment::kRight:
      return "right";
    case Alignment::kJustified:
      return "justify";
    case Alignment::kLeft:
      break;
  }
  return "left";
}

class BlockWriter {
 public:
  BlockWriter(const Document& document, const CharacterFormat& around)
      : document_(document), around_(around), linked_places_(LinkedPlaces(document)) {}

  void Write(const std::vector<Block>& blocks) {
    for (std::size_t i = 0; i < blocks.size(); ++i) {
      switch (blocks[i].kind) {
        case Block::Kind::kParagraph:
          if (!Covered()) WriteParagraph(blocks, i);
          break;
        case Block::Kind::kTableStart:
          StartTable(blocks, i);
          break;
        case Block::Kind::kRowStart:
          StartRow(blocks[i].index);
          break;
        case Block::Kind::kCellStart:
          space_above_ = 0;
          StartCell();
          break;
        case Block::Kind::kCellEnd:
          EndCell();
          break;
        case Block::Kind::kRowEnd:
          EndRow();
          break;
        case Block::Kind::kTableEnd:
          space_above_ = 0;
          EndTable();
          break;
      }
    }
    CloseBox();
    CloseLists(0);
  }

  std::string& Html() { return html_; }

 private:
  struct OpenList {
    std::uint16_t list;
    std::uint8_t level;
    std::int32_t indent;  // of its text
    bool numbered;
  };

  struct OpenTable {
    TableGrid grid;
    std::vector<const RowFormat*> rows;
    std::size_t row = 0;   // how many are begun
    std::size_t cell = 0;  // how many of the row are begun
    bool cell_open = false;
    bool covered = false;  // the open cell shows nothing
  };

  bool Covered() const {
    return std::ranges::any_of(tables_, [](const OpenTable& table) { return table.covered; });
  }

  const ParagraphFormat& FormatOf(const Block& block) const {
    return document_.paragraph_formats[document_.paragraphs[block.index].format];
  }

  void WriteParagraph(const std::vector<Block>& blocks, std::size_t at) {
    const Paragraph& paragraph = document_.paragraphs[blocks[at].index];
    ParagraphFormat format = FormatOf(blocks[at]);
    // Without text, the end of the paragraph gives it its height.
    const CharacterFormat& otherwise =
        paragraph.run_count > 0 ? around_ : document_.character_formats[paragraph.mark_format];
    const CharacterFormat prevailing = PrevailingFormat(document_, paragraph, otherwise);
    // From the edge of the page, the cell, the box or the list that it stands in.
    std::int32_t left = format.left_indent;
    std::int32_t before = format.space_before;
    std::int32_t after = format.space_after;
    std::string name = format.heading > 0 ? "h" + std::to_string(format.heading) : "p";
    const std::optional<TabLine> tab_line = LayOutTabs(document_, paragraph);
    if (tab_line) {
      name = "div";
      left += std::exchange(format.first_indent, 0);
    }
    Css css;
    if (format.list > 0) {
      CloseBox();
      before = SpaceBefore(before);
      left -= OpenItemList(format);
      name = "li";
    } else {
      CloseLists(0);
      if (box_ && !InBox(format)) CloseBox();
      const bool opens_box = !box_ && HasBox(format);
      if (opens_box) OpenBox(blocks, at);
      before = opens_box ? 0 : SpaceBefore(before);
      if (box_) {
        left = 0;
        if (at == box_end_) after = 0;
      }
    }
    space_above_ = after;
    css.Add("margin", FourSides(before, box_ ? 0 : format.right_indent, after, left));
    AddParagraphStyle(format, css);
    CharacterFormat outside = around_;
    if (format.heading > 0 && format.list == 0) {  // browsers show headings large and bold
      outside.half_points = 0;
      outside.bold = true;
    }
    AddFont(document_, prevailing, outside, css);
    html_ += "<" + name + css.Attribute();
    if (format.right_to_left) html_ += " dir=\"rtl\"";
    html_ += ">";
    const std::size_t empty = html_.size();
    if (tab_line)
      WriteTabLine(document_, linked_places_, paragraph, *tab_line, prevailing, html_);
    else
      WriteRuns(document_, linked_places_, paragraph, prevailing, html_);
    if (html_.size() == empty) html_ += "&nbsp;";
    if (name != "li") html_ += "</" + name + ">\n";
  }

  void AddParagraphStyle(const ParagraphFormat& format, Css& css) const {
    if (format.first_indent != 0 && format.list == 0)
      css.Add("text-indent", Points(format.first_indent));
    const Alignment usual = format.right_to_left ? Alignment::kRight : Alignment::kLeft;
    if (format.alignment != usual) css.Add("text-align", AlignmentName(format.alignment));
    if (format.line_spacing == LineSpacing::kMultiple && format.line_height != 240)
      // A line of a word processor is that of the font, about 1.15 of its size.
      css.Add("line-height", std::to_string((format.line_height * 115 + 120) / 240) + "%");
    if (format.line_spacing == LineSpacing::kExact) {
      css.Add("line-height", Points(format.line_height));
      css.Add("mso-line-height-rule", "exactly");
    }
    if (format.line_spacing == LineSpacing::kAtLeast && format.line_height > 240)
      css.Add("line-height", Points(format.line_height));
    if (format.page_break_before) css.Add("page-break-before", "always");
    if (format.list > 0) {
      AddBorders(format.borders, css);
      if (format.shading != kAutomatic) css.Add("background-color", ColourName(format.shading));
    }
  }

  // Neighbouring paragraphs of the same borders and shading stand in one box.
  bool InBox(const ParagraphFormat& format) const {
    return HasBox(format) && format.borders == box_->borders && format.shading == box_->shading &&
           format.left_indent == box_->left_indent && format.right_indent == box_->right_indent;
  }

  // CSS shows the larger of two neighbouring margins; most documents mean their sum.
  std::int32_t SpaceBefore(std::int32_t space) const {
    return space > 0 && !document_.spacing_collapses ? space + space_above_ : space;
  }

  void OpenBox(const std::vector<Block>& blocks, std::size_t at) {
    const ParagraphFormat& format = FormatOf(blocks[at]);
    box_ = format;
    box_end_ = at;
    while (box_end_ + 1 < blocks.size() && blocks[box_end_ + 1].kind == Block::Kind::kParagraph &&
           FormatOf(blocks[box_end_ + 1]).list == 0 && InBox(FormatOf(blocks[box_end_ + 1])))
      ++box_end_;
    box_space_after_ = FormatOf(blocks[box_end_]).space_after;
    // The spaces around the first and the last paragraph are outside the borders.
    Css css;
    const std::string margin = FourSides(SpaceBefore(format.space_before), format.right_indent,
                                         box_space_after_, format.left_indent);
    if (margin != "0") css.Add("margin", margin);
    AddBorders(format.borders, css);
    const auto space = [&](Side side) { return format.borders.at(side).space; };
    if (space(kTop) + space(kRight) + space(kBottom) + space(kLeft) > 0)
      css.Add("padding", FourSides(space(kTop), space(kRight), space(kBottom), space(kLeft)));
    if (format.shading != kAutomatic) css.Add("background-color", ColourName(format.shading));
    html_ += "<div" + css.Attribute() + ">\n";
  }

  void CloseBox() {
    if (!box_) return;
    html_ += "</div>\n";
    space_above_ = box_space_after_;
    box_.reset();
  }

  // Leaves open the list that an item of this format belongs to, and returns its text's indent.
  std::int32_t OpenItemList(const ParagraphFormat& format) {
    while (lists_.size() > lists_outside_ &&
           (lists_.back().list != format.list || lists_.back().level > format.list_level))
      CloseLists(lists_.size() - lists_outside_ - 1);
    const ListLevel& level = document_.lists[format.list - 1U].levels.at(format.list_level);
    if (!(lists_.size() > lists_outside_ && lists_.back().level == format.list_level))
      OpenListOf(format, level);
    else
      html_ += "</li>\n";
    auto& counters = counters_[format.list];
    ++counters.at(format.list_level);
    std::fill(counters.begin() + format.list_level + 1, counters.end(), 0);
    std::int32_t indent = 0;
    for (std::size_t i = lists_outside_; i < lists_.size(); ++i) indent += lists_[i].indent;
    return indent;
  }

  void OpenListOf(const ParagraphFormat& format, const ListLevel& level) {
    std::int32_t outside = 0;
    for (std::size_t i = lists_outside_; i < lists_.size(); ++i) outside += lists_[i].indent;
    const bool numbered = level.number_style != 0;
    const std::int32_t indent = std::max(240, format.left_indent - outside);
    const std::int32_t counted = counters_[format.list].at(format.list_level);
    if (lists_.size() == lists_outside_ && !document_.lists[format.list - 1U].counts_on)
      counters_[format.list] = {};
    const std::int32_t start =
        level.start + (document_.lists[format.list - 1U].counts_on ? counted : 0);
    lists_.push_back({format.list, format.list_level, indent, numbered});
    Css css;
    css.Add("margin", "0");
    css.Add("padding", FourSides(0, 0, 0, indent));
    if (!numbered) css.Add("list-style-type", BulletStyle(level.bullet));
    html_ += numbered ? "<ol" : "<ul";
    if (numbered && level.number_style != L'1')
      html_ += std::string(" type=\"") + static_cast<char>(level.number_style) + "\"";
    if (numbered && start != 1) html_ += " start=\"" + std::to_string(start) + "\"";
    html_ += css.Attribute() + ">\n";
  }

  // Closes lists of the open cell, or of the text outside tables, until `depth` are left.
  void CloseLists(std::size_t depth) {
    for (; lists_.size() > lists_outside_ + depth; lists_.pop_back())
      html_ += lists_.back().numbered ? "</li>\n</ol>\n" : "</li>\n</ul>\n";
  }

  void StartTable(const std::vector<Block>& blocks, std::size_t at) {
    CloseBox();
    CloseLists(0);
    OpenTable table;
    std::vector<std::size_t> cell_counts;
    std::size_t depth = 0;
    for (; at < blocks.size(); ++at) {
      const Block& block = blocks[at];
      if (block.kind == Block::Kind::kTableStart) ++depth;
      if (block.kind == Block::Kind::kTableEnd && --depth == 0) break;
      if (depth != 1) continue;
      if (block.kind == Block::Kind::kRowStart) {
        table.rows.push_back(&document_.rows[block.index]);
        cell_counts.push_back(0);
      } else if (block.kind == Block::Kind::kCellStart) {
        ++cell_counts.back();
      }
    }
    table.grid = FormGrid(table.rows, cell_counts);
    if (!Covered()) {
      Css css;
      css.Add("border-collapse", "collapse");
      css.Add("width", Points(table.grid.width));
      // Not every mail program hands the body's font down to a table.
      CharacterFormat nothing = around_;
      nothing.font = 0;
      nothing.half_points = 0;
      AddFont(document_, around_, nothing, css);
      const Alignment alignment = table.rows.front()->alignment;
      const bool left = alignment == Alignment::kLeft;
      if (left && tables_.empty() && table.grid.left_edge > 0)
        css.Add("margin-left", Points(table.grid.left_edge));
      html_ += R"(<table cellspacing="0" cellpadding="0" border="0")";
      if (!left) html_ += " align=\"" + std::string(AlignmentName(alignment)) + "\"";
      html_ += css.Attribute() + ">\n";
    }
    tables_.push_back(std::move(table));
  }

  void StartRow(std::uint32_t) {
    OpenTable& table = tables_.back();
    ++table.row;
    table.cell = 0;
    if (Covered()) return;
    html_ += "<tr valign=\"top\">";
    if (const std::size_t before = table.grid.rows[table.row - 1].columns_before; before > 0)
      html_ += "<td colspan=\"" + std::to_string(before) + "\"></td>";
  }

  void StartCell() {
    OpenTable& table = tables_.back();
    const GridCell& cell = table.grid.rows[table.row - 1].cells[table.cell++];
    lists_before_.push_back(std::exchange(lists_outside_, lists_.size()));
    if (cell.joins_above) table.covered = true;
    if (cell.joins_left || Covered()) return;
    CloseCellElement(table);
    OpenCellElement(*table.rows[table.row - 1], cell);
    table.cell_open = true;
  }

  void EndCell() {
    if (!Covered()) {
      CloseBox();
      CloseLists(0);
    }
    lists_outside_ = lists_before_.back();
    lists_before_.pop_back();
    // A cell that is covered together with the ones that join it on its left stays so.
    OpenTable& table = tables_.back();
    const std::vector<GridCell>& cells = table.grid.rows[table.row - 1].cells;
    if (table.cell >= cells.size() || !cells[table.cell].joins_left) table.covered = false;
  }

  void EndRow() {
    OpenTable& table = tables_.back();
    table.covered = false;
    if (Covered()) return;
    CloseCellElement(table);
    const std::vector<GridCell>& cells = table.grid.rows[table.row - 1].cells;
    for (; table.cell < cells.size(); ++table.cell) {
      const GridCell& cell = cells[table.cell];
      if (cell.joins_left || cell.joins_above) continue;
      OpenCellElement(*table.rows[table.row - 1], cell);
      table.cell_open = true;
      CloseCellElement(table);
    }
    html_ += "</tr>\n";
  }

  void EndTable() {
    tables_.pop_back();
    if (!Covered()) html_ += "</table>\n";
  }

  void OpenCellElement(const RowFormat& row, const GridCell& cell) {
    Css css;
    if (!tables_.back().grid.rows[tables_.back().row - 1].same_columns)
      css.Add("width", Points(std::max(0, cell.width - row.padding[kLeft] - row.padding[kRight])));
    if (row.height > 0 && cell.row_span == 1) css.Add("height", Points(row.height));
    if (const auto& padding = row.padding;
        std::ranges::any_of(padding, [](auto p) { return p > 0; }))
      css.Add("padding",
              FourSides(padding[kTop], padding[kRight], padding[kBottom], padding[kLeft]));
    AddBorders(cell.format.borders, css);
    if (cell.format.shading != kAutomatic)
      css.Add("background-color", ColourName(cell.format.shading));
    if (cell.format.alignment == VerticalAlignment::kMiddle) css.Add("vertical-align", "middle");
    if (cell.format.alignment == VerticalAlignment::kBottom) css.Add("vertical-align", "bottom");
    if (row.header) {
      css.Add("font-weight", "normal");
      css.Add("text-align", "left");
    }
    html_ += row.header ? "<th" : "<td";
    if (cell.column_span > 1) html_ += " colspan=\"" + std::to_string(cell.column_span) + "\"";
    if (cell.row_span > 1) html_ += " rowspan=\"" + std::to_string(cell.row_span) + "\"";
    html_ += css.Attribute() + ">";
  }

  void CloseCellElement(OpenTable& table) {
    if (table.cell_open) html_ += table.rows[table.row - 1]->header ? "</th>" : "</td>";
    table.cell_open = false;
  }

  const Document& document_;
  const CharacterFormat around_;
  const std::set<std::wstring> linked_places_;
  std::string html_;
  std::vector<OpenList> lists_;
  std::size_t lists_outside_ = 0;  // how many of them are open outside the open cell
  std::vector<std::size_t> lists_before_;
  std::map<std::uint16_t, std::array<std::int32_t, 9>>
      counters_;  // items so far, by list and level
  std::vector<OpenTable> tables_;
  std::optional<ParagraphFormat> box_;
  std::size_t box_end_ = 0;           // the last block in it
  std::int32_t box_space_after_ = 0;  // below it, in twips
  std::int32_t space_above_ = 0;      // below what stands above the next paragraph
};

// The font and size of most of the document.
CharacterFormat PrevailingFont(const Document& document) {
  std::map<std::pair<std::uint16_t, std::uint16_t>, std::uint64_t> lengths;
  for (const Run& run : document.runs) {
    if (run.kind != Run::Kind::kText) continue;
    const CharacterFormat& format = document.character_formats[run.format];
    lengths[{format.font, format.half_points}] += run.length;
  }
  CharacterFormat prevailing;
  if (lengths.empty()) return prevailing;
  const auto& [font, half_points] =
      std::ranges::max_element(lengths, {}, [](const auto& each) { return each.second; })->first;
  prevailing.font = font;
  prevailing.half_points = half_points;
  return prevailing;
}

}  // namespace

std::string WriteHtml(const Document& document, const PageLayout& page) {
  const CharacterFormat around = PrevailingFont(document);
  const std::string families = FontFamilies(document.fonts[around.font]);
  const std::string body_style = (families.empty() ? "" : "font-family:" + families + ";") +
                                 "font-size:" + Points(std::int64_t{around.half_points} * 10);
  BlockWriter writer(document, around);
  writer.Html().reserve(document.text.size() * 2);
  writer.Html() += HtmlStart(page, body_style);
  writer.Write(document.body);
  if (!document.notes.empty()) {
    writer.Html() += "<hr size=\"1\" width=\"33%\" align=\"left\">\n";
    writer.Write(document.notes);
  }
  return std::move(writer.Html()) + HtmlEnd();
}

}  // namespace pxscheduler
