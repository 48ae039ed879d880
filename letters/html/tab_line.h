#pragma once

#include <cstdint>
#include <vector>

#include "letters/rtf/document.h"

namespace pxscheduler {

// A line that is set with tab stops, as the cells of one row of a table: what stands between two
// tabs is a cell.
struct TabCell {
  std::vector<Run> runs;  // none in a gap
  Alignment alignment = Alignment::kLeft;
  std::int32_t width = 0;               // twips; 0 for as wide as its content
  bool takes_rest = false;              // all of the row that other cells leave
  TabLeader leader = TabLeader::kNone;  // drawn along a gap
};

struct TabLine {
  std::int32_t left = 0;       // where it begins, from the left page margin
  std::vector<TabCell> cells;  // none for a line where blanks are enough
  std::int32_t width = 0;      // twips; 0 for as wide as its cells
  std::vector<Run> runs;       // of a line without cells
};

// The lines of a paragraph, or none where blanks are enough for all of them or cells would not do:
// tabs to plain stops on the left, an item of a list, a text that is not set from the left.
std::vector<TabLine> LayOutTabs(const Document& document, const Paragraph& paragraph);

// The stop that a tab leads to from a position, both from the left page margin in twips. A document
// has stops of its own at equal distances after those of the paragraph.
TabStop NextTabStop(const Document& document, const ParagraphFormat& format, std::int64_t position);

}  // namespace pxscheduler
