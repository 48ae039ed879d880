#pragma once

#include <set>
#include <span>
#include <string>
#include <string_view>

#include "letters/html/css.h"
#include "letters/rtf/document.h"

namespace pxscheduler {

// Appends the text with what HTML marks escaped, fit for an attribute too.
void AppendEscaped(std::wstring_view text, std::string& html);

// What most of a paragraph's text looks like, as far as a paragraph's style can say it: font, size,
// colour, weight and slant. `otherwise` where it has no text.
CharacterFormat PrevailingFormat(const Document& document, const Paragraph& paragraph,
                                 const CharacterFormat& otherwise);

// Adds the font, size, colour, weight and slant in which `format` differs from `around`.
void AddFont(const Document& document, const CharacterFormat& format, const CharacterFormat& around,
             Css& css);

// The bookmarks that a link of the document leads to.
std::set<std::wstring> LinkedPlaces(const Document& document);

// Appends runs of a paragraph of this format. `around` is the format that the element around them
// has already; neighbouring runs that differ from it in the same way become one element.
void WriteRuns(const Document& document, const std::set<std::wstring>& linked_places,
               const ParagraphFormat& format, std::span<const Run> runs,
               const CharacterFormat& around, std::string& html);

}  // namespace pxscheduler
