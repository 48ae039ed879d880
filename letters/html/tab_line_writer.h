#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "letters/html/tab_line.h"
#include "letters/rtf/document.h"

namespace pxscheduler {

// Appends the lines of a paragraph that is set with tab stops, each with cells as a table of one
// row. `left` is where the element around them begins, in twips from the left page margin, `around`
// the format that it has already.
void WriteTabLines(const Document& document, const std::set<std::wstring>& linked_places,
                   const ParagraphFormat& format, const std::vector<TabLine>& lines,
                   std::int32_t left, const CharacterFormat& around, std::string& html);

}  // namespace pxscheduler
