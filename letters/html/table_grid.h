#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "letters/rtf/document.h"

namespace pxscheduler {

// One cell of a table as HTML sees it.
struct GridCell {
  std::size_t column_span = 1;
  std::size_t row_span = 1;
  std::int32_t width = 0;  // twips
  CellFormat format;
  bool joins_left = false;   // its content belongs to the cell to its left
  bool joins_above = false;  // it is covered by the cell above and shows nothing
};

struct GridRow {
  std::vector<GridCell> cells;
  std::size_t columns_before = 0;  // empty ones at its start
  bool same_columns = false;       // as in the row above, whose widths say it all
};

struct TableGrid {
  std::vector<GridRow> rows;
  std::int32_t left_edge = 0;
  std::int32_t width = 0;
};

// Finds the columns that rows with edges of their own have in common. `cell_counts` says for each
// row how many cells have content; formats beyond it are cells without content, and a cell without
// a format gets one of an inch.
TableGrid FormGrid(const std::vector<const RowFormat*>& rows,
                   const std::vector<std::size_t>& cell_counts);

}  // namespace pxscheduler
