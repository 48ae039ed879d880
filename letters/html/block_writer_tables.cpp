#include <algorithm>
#include <utility>

#include "letters/html/block_writer.h"

namespace pxscheduler {

void BlockWriter::StartTable(const std::vector<Block>& blocks, std::size_t at) {
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

void BlockWriter::StartRow(std::uint32_t) {
  OpenTable& table = tables_.back();
  ++table.row;
  table.cell = 0;
  if (Covered()) return;
  html_ += "<tr valign=\"top\">";
  if (const std::size_t before = table.grid.rows[table.row - 1].columns_before; before > 0)
    html_ += "<td colspan=\"" + std::to_string(before) + "\"></td>";
}

void BlockWriter::StartCell() {
  OpenTable& table = tables_.back();
  const GridCell& cell = table.grid.rows[table.row - 1].cells[table.cell++];
  lists_before_.push_back(std::exchange(lists_outside_, lists_.size()));
  if (cell.joins_above) table.covered = true;
  if (cell.joins_left || Covered()) return;
  CloseCellElement(table);
  OpenCellElement(*table.rows[table.row - 1], cell);
  table.cell_open = true;
}

void BlockWriter::EndCell() {
  CloseBox();
  CloseLists(0);
  lists_outside_ = lists_before_.back();
  lists_before_.pop_back();
  // A cell that is covered together with the ones that join it on its left stays so.
  OpenTable& table = tables_.back();
  const std::vector<GridCell>& cells = table.grid.rows[table.row - 1].cells;
  if (table.cell >= cells.size() || !cells[table.cell].joins_left) table.covered = false;
}

void BlockWriter::EndRow() {
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

void BlockWriter::EndTable() {
  tables_.pop_back();
  if (!Covered()) html_ += "</table>\n";
}

void BlockWriter::OpenCellElement(const RowFormat& row, const GridCell& cell) {
  Css css;
  if (!tables_.back().grid.rows[tables_.back().row - 1].same_columns)
    css.Add("width", Points(std::max(0, cell.width - row.padding[kLeft] - row.padding[kRight])));
  if (row.height > 0 && cell.row_span == 1) css.Add("height", Points(row.height));
  if (const auto& padding = row.padding; std::ranges::any_of(padding, [](auto p) { return p > 0; }))
    css.Add("padding", FourSides(padding[kTop], padding[kRight], padding[kBottom], padding[kLeft]));
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

void BlockWriter::CloseCellElement(OpenTable& table) {
  if (table.cell_open) html_ += table.rows[table.row - 1]->header ? "</th>" : "</td>";
  table.cell_open = false;
}

}  // namespace pxscheduler
