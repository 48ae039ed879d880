#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace pxscheduler {

// Plain text that stands on lines of its own.
struct TextBlock {
  std::wstring text;          // '\n' ends a line, U+00A0 is a blank at which no line is broken
  std::wstring first_indent;  // before the first line, for instance "  * "
  std::wstring rest_indent;   // before every other one
  int blank_lines_before = 0;
  wchar_t underline = 0;      // the character to underline the text with, 0 for none
  bool preformatted = false;  // lines stay as they are
};

// The blocks as lines without line ends. Lines are filled up to `width` characters; a longer one
// holds a single word or a single bracketed token with the indentation before it.
std::vector<std::wstring> LayOut(const std::vector<TextBlock>& blocks, std::size_t width);

// How wide the blocks are, indents included, in characters.
struct TextWidth {
  std::size_t natural = 0;  // no line broken
  std::size_t least = 0;    // a line broken at every blank
};

TextWidth WidthOf(const std::vector<TextBlock>& blocks);

}  // namespace pxscheduler
