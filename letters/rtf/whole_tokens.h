#pragma once

#include <string>
#include <vector>

#include "letters/rtf/document.h"

namespace pxscheduler {

// Makes each bracketed token of a paragraph part of one text run: the one of its "[". Soft hyphens
// and other invisible characters inside it are dropped, a bookmark moves behind it, and a no-break
// space becomes a plain one. Runs count from the start of `text` and stay in order.
void MakeTokensWhole(std::wstring& text, std::vector<Run>& runs);

}  // namespace pxscheduler
