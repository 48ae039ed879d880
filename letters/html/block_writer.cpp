#include "letters/html/block_writer.h"

#include <algorithm>
#include <span>

#include "letters/html/prevailing_format.h"
#include "letters/html/tab_line_writer.h"

namespace pxscheduler {
namespace {

bool HasBox(const ParagraphFormat& format) {
  return format.shading != kAutomatic ||
         std::ranges::any_of(format.borders, [](const Border& border) {
           return border.style != BorderStyle::kNone;
         });
}

// A first line that begins further to the left stands in the box too.
std::int32_t BoxEdge(const ParagraphFormat& format) {
  return format.left_indent + std::min(0, format.first_indent);
}

}  // namespace

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

void BlockWriter::Write(const std::vector<Block>& blocks) {
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

bool BlockWriter::Covered() const {
  return std::ranges::any_of(tables_, [](const OpenTable& table) { return table.covered; });
}

const ParagraphFormat& BlockWriter::FormatOf(const Block& block) const {
  return document_.paragraph_formats[document_.paragraphs[block.index].format];
}

void BlockWriter::WriteParagraph(const std::vector<Block>& blocks, std::size_t at) {
  const Paragraph& paragraph = document_.paragraphs[blocks[at].index];
  ParagraphFormat format = FormatOf(blocks[at]);
  // Without text, the end of the paragraph gives it its height.
  const CharacterFormat& otherwise =
      paragraph.run_count > 0 ? around_ : document_.character_formats[paragraph.mark_format];
  const CharacterFormat prevailing = PrevailingFormat(document_, paragraph, otherwise);
  // From the edge of the page, the cell, the box or the list that it stands in.
  std::int32_t left = format.left_indent;
  auto [before, after] = SpacesOf(blocks, at);
  std::string name = format.heading > 0 ? "h" + std::to_string(format.heading) : "p";
  const std::vector<TabLine> tab_lines = LayOutTabs(document_, paragraph);
  // From the left edge of the paragraph: each line says itself where it begins.
  std::int32_t lines_indent = 0;
  if (!tab_lines.empty()) {
    name = "div";
    lines_indent = std::ranges::min(tab_lines, {}, &TabLine::left).left - format.left_indent;
    format.first_indent = 0;
  }
  Css css;
  if (format.list > 0) {
    CloseBox();
    before = SpaceBefore(before);
    left -= OpenItemList(paragraph);
    name = "li";
  } else {
    CloseLists(0);
    if (box_ && !InBox(format)) CloseBox();
    const bool opens_box = !box_ && HasBox(format);
    if (opens_box) OpenBox(blocks, at);
    before = opens_box ? 0 : SpaceBefore(before);
    if (box_) {
      left -= BoxEdge(format);
      if (at == box_end_) after = 0;
    }
  }
  space_above_ = after;
  AddMargin(before, box_ ? 0 : format.right_indent, after, left + lines_indent, css);
  AddParagraphStyle(format, css);
  CharacterFormat outside = around_;
  if (format.heading > 0 && format.list == 0 &&
      tab_lines.empty()) {  // browsers show headings large and bold
    outside.half_points = 0;
    outside.bold = true;
  }
  AddFont(document_, prevailing, outside, css);
  html_ += "<" + name + css.Attribute();
  if (format.right_to_left) html_ += " dir=\"rtl\"";
  html_ += ">";
  const std::size_t empty = html_.size();
  if (!tab_lines.empty())
    WriteTabLines(document_, linked_places_, format, tab_lines, format.left_indent + lines_indent,
                  prevailing, html_);
  else
    WriteRuns(document_, linked_places_, format,
              std::span(document_.runs).subspan(paragraph.first_run, paragraph.run_count),
              prevailing, html_);
  if (html_.size() == empty) html_ += "&nbsp;";
  if (name != "li") html_ += "</" + name + ">\n";
}

void BlockWriter::AddParagraphStyle(const ParagraphFormat& format, Css& css) const {
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

std::pair<std::int32_t, std::int32_t> BlockWriter::SpacesOf(const std::vector<Block>& blocks,
                                                            std::size_t at) const {
  const ParagraphFormat& format = FormatOf(blocks[at]);
  const auto spaced_from = [&](std::size_t neighbour) {
    return !format.spaced_from_other_styles_only || neighbour >= blocks.size() ||
           blocks[neighbour].kind != Block::Kind::kParagraph ||
           FormatOf(blocks[neighbour]).style != format.style;
  };
  return {spaced_from(at - 1) ? format.space_before : 0,
          spaced_from(at + 1) ? format.space_after : 0};
}

bool BlockWriter::InBox(const ParagraphFormat& format) const {
  return HasBox(format) && format.borders == box_->borders && format.shading == box_->shading &&
         BoxEdge(format) == BoxEdge(*box_) && format.right_indent == box_->right_indent;
}

std::int32_t BlockWriter::SpaceBefore(std::int32_t space) const {
  return space > 0 && !document_.spacing_collapses ? space + space_above_ : space;
}

void BlockWriter::OpenBox(const std::vector<Block>& blocks, std::size_t at) {
  const ParagraphFormat& format = FormatOf(blocks[at]);
  box_ = format;
  box_end_ = at;
  while (box_end_ + 1 < blocks.size() && blocks[box_end_ + 1].kind == Block::Kind::kParagraph &&
         FormatOf(blocks[box_end_ + 1]).list == 0 && InBox(FormatOf(blocks[box_end_ + 1])))
    ++box_end_;
  box_space_after_ = SpacesOf(blocks, box_end_).second;
  // The spaces around the first and the last paragraph are outside the borders.
  Css css;
  const std::int32_t before = SpaceBefore(SpacesOf(blocks, at).first);
  if (before != 0 || format.right_indent != 0 || box_space_after_ != 0 || BoxEdge(format) != 0)
    AddMargin(before, format.right_indent, box_space_after_, BoxEdge(format), css);
  AddBorders(format.borders, css);
  const auto space = [&](Side side) { return format.borders.at(side).space; };
  if (space(kTop) + space(kRight) + space(kBottom) + space(kLeft) > 0)
    css.Add("padding", FourSides(space(kTop), space(kRight), space(kBottom), space(kLeft)));
  if (format.shading != kAutomatic) css.Add("background-color", ColourName(format.shading));
  html_ += "<div" + css.Attribute() + ">\n";
}

void BlockWriter::CloseBox() {
  if (!box_) return;
  html_ += "</div>\n";
  space_above_ = box_space_after_;
  box_.reset();
}

}  // namespace pxscheduler
