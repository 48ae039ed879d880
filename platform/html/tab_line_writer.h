#pragma once

#include <set>
#include <string>

#include "platform/html/tab_line.h"
#include "platform/rtf/document.h"

namespace pxscheduler {

// Appends a paragraph that is set with tab stops, as a table of one row. `around` is the format
// that the element around it has already.
void WriteTabLine(const Document& document, const std::set<std::wstring>& linked_places,
                  const Paragraph& paragraph, const TabLine& line, const CharacterFormat& around,
                  std::string& html);

}  // namespace pxscheduler
