#pragma once

#include <set>
#include <span>
#include <string>

#include "letters/rtf/document.h"

namespace pxscheduler {

// The bookmarks that a link of the document leads to.
std::set<std::wstring> LinkedPlaces(const Document& document);

// Appends runs of a paragraph of this format. `around` is the format that the element around them
// has already; neighbouring runs that differ from it in the same way become one element.
void WriteRuns(const Document& document, const std::set<std::wstring>& linked_places,
               const ParagraphFormat& format, std::span<const Run> runs,
               const CharacterFormat& around, std::string& html);

}  // namespace pxscheduler
