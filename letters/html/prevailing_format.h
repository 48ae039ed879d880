#pragma once

#include "letters/rtf/document.h"

namespace pxscheduler {

// The format of most of a text, which the element around it states once.

// The font and size alone; those of a format without settings where the document has no text.
CharacterFormat PrevailingFont(const Document& document);

// As far as a paragraph's style can say it: font, size, colour, weight and slant. Those of
// `otherwise` where the paragraph has no text.
CharacterFormat PrevailingFormat(const Document& document, const Paragraph& paragraph,
                                 const CharacterFormat& otherwise);

}  // namespace pxscheduler
