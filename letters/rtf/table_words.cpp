#include <algorithm>
#include <cstdint>
#include <string_view>
#include <utility>

#include "letters/rtf/reading.h"

namespace pxscheduler {
namespace {

constexpr std::int32_t kLongestDistance = 31680;  // twips, 22 inches
constexpr std::size_t kMostCells = 1'000;         // of a row

std::int32_t Length(const Word& word) {
  return std::clamp(word.Or(0), -kLongestDistance, kLongestDistance);
}

template <BorderTarget::Owner kOwner, std::uint8_t kSides>
void AimBorders(Reading& reading, const Word&) {
  reading.border_target = {kOwner, kSides};
}

template <Side kSide>
void SetPadding(Reading& reading, const Word& word) {
  reading.Row().row.padding.at(kSide) = std::clamp(word.Or(0), 0, 1440);
}

template <VerticalAlignment kAlignment>
void AlignCell(Reading& reading, const Word&) {
  reading.Row().cell.alignment = kAlignment;
}

// Several ends of cells close by mean the same edge.
void EndCellFormat(Reading& reading, const Word& word) {
  RowInProgress& row = reading.Row();
  CellFormat cell = std::exchange(row.cell, {});
  cell.right_edge = Length(word);
  const bool bare = std::ranges::all_of(
      cell.borders, [](const Border& border) { return border.style == BorderStyle::kNone; });
  if (bare) cell.borders = row.borders;
  if (row.cell_pattern > 0 && cell.shading == kAutomatic) {
    const auto level =
        static_cast<std::uint32_t>(255 - std::min(row.cell_pattern, 10000) * 255 / 10000);
    cell.shading = level << 16 | level << 8 | level;
  }
  row.cell_pattern = 0;
  if (row.row.cells.size() < kMostCells) row.row.cells.push_back(cell);
}

void EndCell(Reading& reading, std::int32_t depth) {
  if (!reading.InBody()) return;
  reading.builder.EndCell(reading.TakeParagraphFormat(), reading.state.character, depth);
}

void EndRow(Reading& reading, std::int32_t depth) {
  if (!reading.InBody()) return;
  if (reading.builder.HasContent()) EndCell(reading, depth);
  reading.builder.EndRow(reading.Row().row, depth);
}

}  // namespace

void AddTableWords(WordTable& words) {
  using Owner = BorderTarget::Owner;
  const auto add = [&](std::string_view name, void (*apply)(Reading&, const Word&)) {
    words[name] = {apply, false};
  };
  add("intbl",
      [](Reading& r, const Word&) { r.state.table_depth = std::max(r.state.table_depth, 1); });
  add("itap",
      [](Reading& r, const Word& w) { r.state.table_depth = std::clamp(w.Or(1), 0, 1000); });
  add("cell", [](Reading& r, const Word&) { EndCell(r, 1); });
  add("nestcell", [](Reading& r, const Word&) { EndCell(r, std::max(2, r.state.table_depth)); });
  add("row", [](Reading& r, const Word&) { EndRow(r, 1); });
  add("nestrow", [](Reading& r, const Word&) { EndRow(r, std::max(2, r.state.table_depth)); });
  words["nesttableprops"] = {[](Reading& r, const Word&) { r.state.nested_row = true; }, true};
  words["nonesttables"] = {[](Reading& r, const Word&) { r.Begin(Destination::kSkip); }, true};

  add("trowd", [](Reading& r, const Word&) { r.Row() = {}; });
  add("trleft", [](Reading& r, const Word& w) { r.Row().row.left_edge = Length(w); });
  add("trgaph", [](Reading& r, const Word& w) {
    const std::int32_t gap = std::clamp(w.Or(0), 0, 1440);
    r.Row().row.padding[kLeft] = gap;
    r.Row().row.padding[kRight] = gap;
  });
  add("trrh", [](Reading& r, const Word& w) {
    const std::int32_t height = Length(w);
    r.Row().row.height = height < 0 ? -height : height;
  });
  add("trhdr", [](Reading& r, const Word&) { r.Row().row.header = true; });
  add("trql", [](Reading& r, const Word&) { r.Row().row.alignment = Alignment::kLeft; });
  add("trqc", [](Reading& r, const Word&) { r.Row().row.alignment = Alignment::kCentre; });
  add("trqr", [](Reading& r, const Word&) { r.Row().row.alignment = Alignment::kRight; });
  add("trpaddt", SetPadding<kTop>);
  add("trpaddr", SetPadding<kRight>);
  add("trpaddb", SetPadding<kBottom>);
  add("trpaddl", SetPadding<kLeft>);

  add("cellx", EndCellFormat);
  add("clmrg", [](Reading& r, const Word&) { r.Row().cell.joins_left = true; });
  add("clvmrg", [](Reading& r, const Word&) { r.Row().cell.joins_above = true; });
  add("clvertalt", AlignCell<VerticalAlignment::kTop>);
  add("clvertalc", AlignCell<VerticalAlignment::kMiddle>);
  add("clvertalb", AlignCell<VerticalAlignment::kBottom>);
  add("clcbpat", [](Reading& r, const Word& w) { r.Row().cell.shading = r.ColourNumber(w.Or(0)); });
  add("clshdng", [](Reading& r, const Word& w) { r.Row().cell_pattern = std::max(0, w.Or(0)); });

  add("clbrdrt", AimBorders<Owner::kCell, 1 << kTop>);
  add("clbrdrr", AimBorders<Owner::kCell, 1 << kRight>);
  add("clbrdrb", AimBorders<Owner::kCell, 1 << kBottom>);
  add("clbrdrl", AimBorders<Owner::kCell, 1 << kLeft>);
  add("trbrdrt", AimBorders<Owner::kRow, 1 << kTop>);
  add("trbrdrr", AimBorders<Owner::kRow, 1 << kRight>);
  add("trbrdrb", AimBorders<Owner::kRow, 1 << kBottom>);
  add("trbrdrl", AimBorders<Owner::kRow, 1 << kLeft>);
  for (const char* elsewhere : {"trbrdrh", "trbrdrv", "cldglu", "cldgll"})
    add(elsewhere, [](Reading& r, const Word&) { r.border_target = {}; });
}

}  // namespace pxscheduler
