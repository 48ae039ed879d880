#include <algorithm>
#include <cstdint>
#include <string_view>
#include <utility>

#include "letters/rtf/control_words.h"
#include "letters/rtf/rtf_parser.h"

namespace pxscheduler {
namespace {

constexpr std::size_t kMostCells = 1'000;  // of a row

template <Side kSide>
void SetPadding(RtfParser& parser, const Parameter& parameter) {
  parser.Row().row.padding.at(kSide) = std::clamp(parameter.Number(), 0, 1440);
}

template <VerticalAlignment kAlignment>
void AlignCell(RtfParser& parser, const Parameter&) {
  parser.Row().cell.alignment = kAlignment;
}

// Several ends of cells close by mean the same edge.
void EndCellFormat(RtfParser& parser, const Parameter& parameter) {
  RowInProgress& row = parser.Row();
  CellFormat cell = std::exchange(row.cell, {});
  cell.right_edge = parameter.Length();
  const bool bare = std::ranges::all_of(
      cell.borders, [](const Border& border) { return border.style == BorderStyle::kNone; });
  if (bare) cell.borders = row.borders;
  if (row.cell_pattern > 0 && cell.shading == kAutomatic) cell.shading = Grey(row.cell_pattern);
  row.cell_pattern = 0;
  if (row.row.cells.size() < kMostCells) row.row.cells.push_back(cell);
}

void EndCell(RtfParser& parser, std::int32_t depth) {
  if (!parser.InBody()) return;
  parser.builder.EndCell(parser.TakeParagraphFormat(), parser.state.character, depth);
}

void EndRow(RtfParser& parser, std::int32_t depth) {
  if (!parser.InBody()) return;
  if (parser.builder.HasContent()) EndCell(parser, depth);
  parser.builder.EndRow(parser.Row().row, depth);
}

}  // namespace

void AddTableWords(ControlWords& words) {
  words.Add("intbl", [](RtfParser& p, const Parameter&) {
    p.state.table_depth = std::max(p.state.table_depth, 1);
  });
  words.Add("itap", [](RtfParser& p, const Parameter& n) {
    p.state.table_depth = std::clamp(n.Or(1), 0, 1000);
  });
  words.Add("cell", [](RtfParser& p, const Parameter&) { EndCell(p, 1); });
  words.Add("nestcell",
            [](RtfParser& p, const Parameter&) { EndCell(p, std::max(2, p.state.table_depth)); });
  words.Add("row", [](RtfParser& p, const Parameter&) { EndRow(p, 1); });
  words.Add("nestrow",
            [](RtfParser& p, const Parameter&) { EndRow(p, std::max(2, p.state.table_depth)); });
  words.AddDestination("nesttableprops",
                       [](RtfParser& p, const Parameter&) { p.state.nested_row = true; });
  words.AddDestination("nonesttables", Begin<Destination::kSkip>);

  words.Add("trowd", [](RtfParser& p, const Parameter&) { p.Row() = {}; });
  words.Add("trleft", [](RtfParser& p, const Parameter& n) { p.Row().row.left_edge = n.Length(); });
  words.Add("trgaph", [](RtfParser& p, const Parameter& n) {
    const std::int32_t gap = std::clamp(n.Number(), 0, 1440);
    p.Row().row.padding[kLeft] = gap;
    p.Row().row.padding[kRight] = gap;
  });
  words.Add("trrh", [](RtfParser& p, const Parameter& n) {
    const std::int32_t height = n.Length();
    p.Row().row.height = height < 0 ? -height : height;
  });
  words.Add("trhdr", [](RtfParser& p, const Parameter&) { p.Row().row.header = true; });
  words.Add("trql",
            [](RtfParser& p, const Parameter&) { p.Row().row.alignment = Alignment::kLeft; });
  words.Add("trqc",
            [](RtfParser& p, const Parameter&) { p.Row().row.alignment = Alignment::kCentre; });
  words.Add("trqr",
            [](RtfParser& p, const Parameter&) { p.Row().row.alignment = Alignment::kRight; });
  words.Add("trpaddt", SetPadding<kTop>);
  words.Add("trpaddr", SetPadding<kRight>);
  words.Add("trpaddb", SetPadding<kBottom>);
  words.Add("trpaddl", SetPadding<kLeft>);

  words.Add("cellx", EndCellFormat);
  words.Add("clmrg", [](RtfParser& p, const Parameter&) { p.Row().cell.joins_left = true; });
  words.Add("clvmrg", [](RtfParser& p, const Parameter&) { p.Row().cell.joins_above = true; });
  words.Add("clvertalt", AlignCell<VerticalAlignment::kTop>);
  words.Add("clvertalc", AlignCell<VerticalAlignment::kMiddle>);
  words.Add("clvertalb", AlignCell<VerticalAlignment::kBottom>);
  words.Add("clcbpat", [](RtfParser& p, const Parameter& n) {
    p.Row().cell.shading = p.ColourNumber(n.Number());
  });
  words.Add("clshdng", [](RtfParser& p, const Parameter& n) {
    p.Row().cell_pattern = std::max(0, n.Number());
  });
}

}  // namespace pxscheduler
