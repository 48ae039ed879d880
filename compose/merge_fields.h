#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "data/recordset.h"
#include "platform/code_page.h"
#include "platform/regional.h"
#include "text/text_template.h"

namespace pxscheduler {

inline constexpr std::size_t kMergeTokenCount = 15;

// A row's value for each merge token, in the order in which the tokens are replaced.
using MergeValues = std::array<std::wstring, kMergeTokenCount>;

// A text with merge tokens, parsed once for all rows.
struct MergeTemplate {
  std::wstring text;    // as the code page preserves it
  TextTemplate parsed;  // the same with a place for each token, which takes a value of MergeValues
  bool values_may_complete_a_token = false;  // a "[" stands before a token, as in "[[Number]"
};

MergeTemplate PrepareMergeTemplate(const CodePage& ansi, const std::wstring& text);

// The current row's values; "FullName" replaces a blank "Attention". Raises ItemNotFound (3265)
// where a column is missing.
MergeValues ReadMergeValues(const Regional& regional, const Recordset& result_set,
                            const std::wstring& email);

// The row's "FullName", as ReadMergeValues read it.
const std::wstring& FullNameOf(const MergeValues& values);

// The values as the code page preserves them.
struct ValuesInCodePage {
  MergeValues texts;
  bool may_hold_tokens = true;  // one of them contains "["
};
ValuesInCodePage InCodePage(const CodePage& ansi, MergeValues values);

// Whether filling the places of the template gives the same as MergeInSequence, because no value
// creates a token. May return false where one does not.
bool CanFillPlaces(const MergeTemplate& merge_template, const ValuesInCodePage& values);

// The text with its tokens replaced one after another, so that a later token in a value is replaced
// too.
std::wstring MergeInSequence(std::wstring text, const MergeValues& values);

}  // namespace pxscheduler
