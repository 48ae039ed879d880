#pragma once

#include <string>
#include <vector>

#include "letters/rtf/document.h"

namespace pxscheduler {

// Makes each bracketed token of a paragraph part of one text run: the one of its "[". What divides
// a token without being seen (a place to divide a word, a bookmark) leaves it, and a blank at which
// no line is broken becomes a plain one. Runs count from the start of `text` and stay in order.
void MakeTokensWhole(std::wstring& text, std::vector<Run>& runs);

}  // namespace pxscheduler
