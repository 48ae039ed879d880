#pragma once

#include <string>
#include <string_view>

namespace pxscheduler {

// The address of a HYPERLINK field's instruction, for instance "https://a.example/#top" for
// `HYPERLINK "https://a.example/" \l "top"`; "" for any other field. Brackets of a merge token that
// the word processor percent-encoded are brackets again, and so is the blank inside.
std::wstring HyperlinkAddress(std::wstring_view instruction);

}  // namespace pxscheduler
