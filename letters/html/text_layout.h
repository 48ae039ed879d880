#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace pxscheduler {

// A piece of plain text that stands on lines of its own.
struct TextBlock {
  std::wstring text;          // '\n' ends a line, U+00A0 is a blank at which no line is broken
  std::wstring first_indent;  // before the first line, for instance "  * "
  std::wstring rest_indent;   // before every other one
  int blank_lines_before = 0;
  wchar_t underline = 0;      // the character to underline the text with, 0 for none
  bool preformatted = false;  // lines stay as they are
};

struct TextCell {
  std::vector<TextBlock> blocks;
  std::size_t column_span = 1;
  std::size_t row_span = 1;
  bool header = false;
  bool right_aligned = false;
};

using TextTable = std::vector<std::vector<TextCell>>;

// The blocks as lines without line ends. Lines are filled up to `width` characters; a longer one
// holds a single word or a single bracketed token with the indentation before it.
std::vector<std::wstring> LayOut(const std::vector<TextBlock>& blocks, std::size_t width);

// The table as blocks: one preformatted block of aligned columns where they fit in `width`
// characters and no row becomes too high to be read across, else the cells one below the other.
// Rows stand apart from what is before them; a single row does not.
std::vector<TextBlock> LayOutTable(TextTable table, std::size_t width);

}  // namespace pxscheduler
