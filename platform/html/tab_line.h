#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/rtf/document.h"

namespace pxscheduler {

// A paragraph of one line that is set with tab stops, as the cells of one row of a table: what
// stands between two tabs is a cell.
struct TabCell {
  std::vector<Run> runs;  // none in a gap
  Alignment alignment = Alignment::kLeft;
  std::int32_t width = 0;               // twips; 0 for as wide as its content
  bool takes_rest = false;              // all of the row that other cells leave
  TabLeader leader = TabLeader::kNone;  // drawn along a gap
};

struct TabLine {
  std::vector<TabCell> cells;
  std::int32_t width = 0;  // twips; 0 for as wide as its cells
};

// Nothing where blanks are enough or cells would not do: tabs to plain stops on the left, several
// lines, an item of a list, a heading, a text that is not set from the left.
std::optional<TabLine> LayOutTabs(const Document& document, const Paragraph& paragraph);

// The stop that a tab leads to from a position, both from the left page margin in twips. A document
// has stops of its own at equal distances after those of the paragraph.
TabStop NextTabStop(const Document& document, const ParagraphFormat& format, std::int64_t position);

}  // namespace pxscheduler
