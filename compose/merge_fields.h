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

// A text with merge tokens, taken apart once for all rows.
struct MergeTemplate {
  std::wstring text;    // what the code page keeps
  TextTemplate filled;  // the same with a place for each token, which MergeValues are for
  bool values_may_complete_a_token = false;  // a "[" stands before a token, as in "[[Number]"
};

MergeTemplate PrepareMergeTemplate(const CodePage& ansi, const std::wstring& text);

// The current row's values; "FullName" stands in for a blank "Attention". Raises ItemNotFound
// (3265) where a column is missing.
MergeValues ReadMergeValues(const Regional& regional, const Recordset& result_set,
                            const std::wstring& email);

// The row's "FullName", as ReadMergeValues read it.
const std::wstring& FullNameOf(const MergeValues& values);

// The values as they come out of the helper library, which every replacement passes.
struct ValuesInCodePage {
  MergeValues texts;
  bool may_hold_tokens = true;  // one of them holds an opening bracket
};
ValuesInCodePage InCodePage(const CodePage& ansi, MergeValues values);

// Whether filling the places of the template gives what replacing the tokens one after another
// gives: no value brings a token into being.
bool CanFillPlaces(const MergeTemplate& merge_template, const ValuesInCodePage& values);

// The text with its tokens replaced one after another: a value that holds a later token is replaced
// again.
std::wstring MergeInSequence(std::wstring text, const MergeValues& values);

}  // namespace pxscheduler
