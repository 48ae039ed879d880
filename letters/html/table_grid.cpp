#include "letters/html/table_grid.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <utility>

namespace pxscheduler {
namespace {

constexpr std::int32_t kSameEdge = 20;  // twips: edges closer than this are one
constexpr std::int32_t kUnknownWidth = 1440;

// The edges of a row, ascending; the first is its left one.
std::vector<std::int32_t> EdgesOf(const RowFormat& row, std::size_t cells) {
  std::vector<std::int32_t> edges{row.left_edge};
  for (std::size_t i = 0; i < std::max(cells, row.cells.size()); ++i) {
    const std::int32_t edge =
        i < row.cells.size() ? row.cells[i].right_edge : edges.back() + kUnknownWidth;
    edges.push_back(std::max(edge, edges.back() + kSameEdge + 1));
  }
  return edges;
}

std::vector<std::int32_t> CommonEdges(const std::vector<std::vector<std::int32_t>>& rows) {
  std::vector<std::int32_t> all;
  for (const auto& row : rows) all.insert(all.end(), row.begin(), row.end());
  std::ranges::sort(all);
  std::vector<std::int32_t> edges;
  for (const std::int32_t edge : all)
    if (edges.empty() || edge - edges.back() > kSameEdge) edges.push_back(edge);
  return edges;
}

std::size_t ColumnOf(const std::vector<std::int32_t>& edges, std::int32_t edge) {
  return static_cast<std::size_t>(std::ranges::upper_bound(edges, edge) - edges.begin()) - 1;
}

using ColumnRange = std::pair<std::size_t, std::size_t>;

GridRow FormRow(const RowFormat& row, const std::vector<std::int32_t>& row_edges,
                const std::vector<std::int32_t>& edges, std::vector<ColumnRange>& ranges) {
  GridRow formed;
  formed.columns_before = ColumnOf(edges, row_edges.front());
  std::size_t head = 0;  // the cell that those after it join
  for (std::size_t i = 0; i + 1 < row_edges.size(); ++i) {
    GridCell cell;
    if (i < row.cells.size()) cell.format = row.cells[i];
    cell.width = row_edges[i + 1] - row_edges[i];
    const ColumnRange range{ColumnOf(edges, row_edges[i]), ColumnOf(edges, row_edges[i + 1])};
    cell.column_span = std::max<std::size_t>(1, range.second - range.first);
    cell.joins_left = cell.format.joins_left && i > 0;
    ranges.push_back(range);
    if (cell.joins_left) {
      formed.cells[head].column_span += cell.column_span;
      formed.cells[head].width += cell.width;
      formed.cells[head].format.borders[kRight] = cell.format.borders[kRight];
      ranges[head].second = range.second;
    } else {
      head = i;
    }
    formed.cells.push_back(cell);
  }
  return formed;
}

}  // namespace

TableGrid FormGrid(const std::vector<const RowFormat*>& rows,
                   const std::vector<std::size_t>& cell_counts) {
  TableGrid grid;
  std::vector<std::vector<std::int32_t>> row_edges;
  for (std::size_t i = 0; i < rows.size(); ++i)
    row_edges.push_back(EdgesOf(*rows[i], cell_counts[i]));
  const std::vector<std::int32_t> edges = CommonEdges(row_edges);
  if (edges.empty()) return grid;
  grid.left_edge = edges.front();
  grid.width = edges.back() - edges.front();

  // The cells of the row above that a cell of the same columns may join, and which one shows them.
  std::map<ColumnRange, std::pair<std::size_t, std::size_t>> above;
  for (std::size_t r = 0; r < rows.size(); ++r) {
    std::vector<ColumnRange> ranges;
    grid.rows.push_back(FormRow(*rows[r], row_edges[r], edges, ranges));
    grid.rows[r].same_columns = r > 0 && row_edges[r] == row_edges[r - 1] &&
                                std::ranges::equal(grid.rows[r].cells, grid.rows[r - 1].cells, {},
                                                   &GridCell::joins_left, &GridCell::joins_left);
    std::map<ColumnRange, std::pair<std::size_t, std::size_t>> heads;
    for (std::size_t c = 0; c < ranges.size(); ++c) {
      GridCell& cell = grid.rows[r].cells[c];
      if (cell.joins_left) continue;
      const auto head = above.find(ranges[c]);
      if (cell.format.joins_above && head != above.end()) {
        cell.joins_above = true;
        GridCell& top = grid.rows[head->second.first].cells[head->second.second];
        ++top.row_span;
        top.format.borders[kBottom] = cell.format.borders[kBottom];
        heads.insert(*head);
      } else {
        heads[ranges[c]] = {r, c};
      }
    }
    above = std::move(heads);
  }
  return grid;
}

}  // namespace pxscheduler
