#pragma once

#include <optional>
#include <string_view>

namespace pxscheduler {

// What the plain rendering reads from the "style" attribute of an element (CSS 2.1).
struct InlineStyle {
  bool hidden = false;         // display:none
  bool right_aligned = false;  // text-align:right
  // The blank lines that stand for the margins: 0 for one of less than 5 points, else 1.
  std::optional<int> margin_top;
  std::optional<int> margin_bottom;
  wchar_t list_style = 0;  // as in the "type" attribute of a list: '1', 'a', 'A', 'i', 'I'; 0: none
};

// Declarations that it does not know, or that are malformed, count for nothing.
InlineStyle ReadInlineStyle(std::wstring_view style);

}  // namespace pxscheduler
