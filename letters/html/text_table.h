#pragma once

#include <cstddef>
#include <vector>

#include "letters/html/text_layout.h"

namespace pxscheduler {

struct TextCell {
  std::vector<TextBlock> blocks;
  std::size_t column_span = 1;
  std::size_t row_span = 1;
  bool header = false;
  bool right_aligned = false;
};

using TextTable = std::vector<std::vector<TextCell>>;

// The table as blocks: one preformatted block of aligned columns where they fit in `width`
// characters and no row becomes too high to be read across, else the cells one below the other.
// Rows stand apart from what is before them; a single row does not.
std::vector<TextBlock> LayOutTable(TextTable table, std::size_t width);

}  // namespace pxscheduler
