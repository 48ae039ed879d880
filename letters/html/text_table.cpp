#include "letters/html/text_table.h"

#include <algorithm>
#include <numeric>
#include <optional>
#include <string>
#include <utility>

namespace pxscheduler {
namespace {

constexpr std::size_t kColumnGap = 2;
constexpr std::size_t kMostColumns = 40;
constexpr std::size_t kMostRowsSpanned = 1000;
constexpr std::size_t kHighestRow = 8;  // lines

struct PlacedCell {
  const TextCell* cell;
  std::size_t row;
  std::size_t column;
  std::size_t column_span;
};

// Where each cell stands once the spans of those above it are taken into account (HTML, "forming a
// table"). Nothing when the table is too wide to be drawn with characters.
std::optional<std::vector<PlacedCell>> PlaceCells(const TextTable& table) {
  std::vector<PlacedCell> placed;
  std::vector<std::size_t> taken(kMostColumns, 0);  // rows still covered from above, by column
  for (std::size_t row = 0; row < table.size(); ++row) {
    std::vector<std::size_t> next = taken;
    for (std::size_t& rows : next) rows -= rows > 0 ? 1 : 0;
    std::size_t column = 0;
    for (const TextCell& cell : table[row]) {
      while (column < kMostColumns && taken[column] > 0) ++column;
      const std::size_t span = std::max<std::size_t>(1, cell.column_span);
      if (column >= kMostColumns || span > kMostColumns - column) return std::nullopt;
      placed.push_back({&cell, row, column, span});
      const std::size_t rows = std::clamp<std::size_t>(cell.row_span, 1, kMostRowsSpanned);
      for (const std::size_t end = column + span; column < end; ++column) next[column] = rows - 1;
    }
    taken = std::move(next);
  }
  return placed;
}

std::size_t TotalWidth(const std::vector<std::size_t>& widths, std::size_t first,
                       std::size_t count) {
  std::size_t total = 0;
  for (std::size_t column = first; column < first + count; ++column)
    if (widths[column] > 0) total += widths[column] + (total > 0 ? kColumnGap : 0);
  return total;
}

// Makes the last column that the cell covers wide enough for the cell.
void WidenTo(std::size_t width, const PlacedCell& placed, std::vector<std::size_t>& widths) {
  const std::size_t now = TotalWidth(widths, placed.column, placed.column_span);
  const std::size_t last = placed.column + placed.column_span - 1;
  if (width > now) widths[last] += width - now;
}

// The width of each column, 0 for one that stays empty. Nothing when they do not fit.
std::optional<std::vector<std::size_t>> ColumnWidths(const std::vector<PlacedCell>& cells,
                                                     std::size_t width) {
  std::vector<std::size_t> natural(kMostColumns, 0);
  std::vector<std::size_t> least(kMostColumns, 0);
  for (const PlacedCell& placed : cells) {
    if (placed.column_span > 1) continue;
    const TextWidth cell = WidthOf(placed.cell->blocks);
    natural[placed.column] = std::max(natural[placed.column], cell.natural);
    least[placed.column] = std::max(least[placed.column], cell.least);
  }
  for (const PlacedCell& placed : cells) {
    if (placed.column_span == 1) continue;
    const TextWidth cell = WidthOf(placed.cell->blocks);
    WidenTo(cell.natural, placed, natural);
    WidenTo(cell.least, placed, least);
  }
  for (std::size_t column = 0; column < kMostColumns; ++column)
    natural[column] = std::max(natural[column], least[column]);
  if (TotalWidth(natural, 0, kMostColumns) <= width) return natural;
  const std::size_t narrowest = TotalWidth(least, 0, kMostColumns);
  if (narrowest > width) return std::nullopt;
  // What is left over goes to the columns in the proportion of what they lack.
  const std::size_t left = width - narrowest;
  const std::size_t lacking = std::accumulate(natural.begin(), natural.end(), std::size_t{0}) -
                              std::accumulate(least.begin(), least.end(), std::size_t{0});
  for (std::size_t column = 0; column < kMostColumns; ++column)
    least[column] += (natural[column] - least[column]) * left / std::max<std::size_t>(1, lacking);
  return least;
}

std::size_t PositionOf(const std::vector<std::size_t>& widths, std::size_t column) {
  const std::size_t before = TotalWidth(widths, 0, column);
  return before > 0 ? before + kColumnGap : 0;
}

std::optional<std::wstring> AlignedTable(const TextTable& table, std::size_t width) {
  const auto cells = PlaceCells(table);
  if (!cells) return std::nullopt;
  const auto widths = ColumnWidths(*cells, width);
  if (!widths || std::ranges::count_if(*widths, [](std::size_t each) { return each > 0; }) < 2)
    return std::nullopt;

  std::vector<std::vector<std::wstring>> rows(table.size());
  for (const PlacedCell& placed : *cells) {
    const std::size_t start = PositionOf(*widths, placed.column);
    const std::size_t room = TotalWidth(*widths, placed.column, placed.column_span);
    std::vector<std::wstring>& row = rows[placed.row];
    const std::vector<std::wstring> lines = LayOut(placed.cell->blocks, room);
    if (lines.size() > kHighestRow) return std::nullopt;
    if (lines.size() > row.size()) row.resize(lines.size());
    for (std::size_t i = 0; i < lines.size(); ++i) {
      const bool right = placed.cell->right_aligned && lines[i].size() < room;
      row[i].resize(std::max(row[i].size(), start + (right ? room - lines[i].size() : 0)), L' ');
      row[i] += lines[i];
    }
  }
  const bool high = std::ranges::any_of(rows, [](const auto& row) { return row.size() > 1; });
  const bool headed = table.size() > 1 && std::ranges::any_of(table[0], &TextCell::header);
  std::wstring text;
  for (std::size_t row = 0; row < rows.size(); ++row) {
    if (rows[row].empty()) continue;
    if (!text.empty() && high && !(headed && row == 1)) text += L'\n';
    for (const std::wstring& line : rows[row]) text += line + L'\n';
    if (!headed || row != 0) continue;
    std::wstring rule;
    for (std::size_t column = 0; column < kMostColumns; ++column) {
      if ((*widths)[column] == 0) continue;
      rule.resize(PositionOf(*widths, column), L' ');
      rule.append((*widths)[column], L'-');
    }
    text += rule + L'\n';
  }
  if (!text.empty()) text.pop_back();
  return text;
}

}  // namespace

std::vector<TextBlock> LayOutTable(TextTable table, std::size_t width) {
  if (const auto aligned = AlignedTable(table, width)) {
    TextBlock block;
    block.text = *aligned;
    block.blank_lines_before = table.size() > 1 ? 1 : 0;
    block.preformatted = true;
    return {block};
  }
  std::vector<TextBlock> blocks;
  for (std::vector<TextCell>& row : table) {
    bool first_of_row = row.size() > 1 && table.size() > 1;
    for (TextCell& cell : row) {
      for (TextBlock& block : cell.blocks) {
        if (std::exchange(first_of_row, false)) block.blank_lines_before = 1;
        blocks.push_back(std::move(block));
      }
    }
  }
  return blocks;
}

}  // namespace pxscheduler
