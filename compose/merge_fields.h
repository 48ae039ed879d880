#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "data/recordset.h"
#include "platform/code_page.h"
#include "platform/regional.h"
#include "text/text_pieces.h"

namespace pxscheduler {

inline constexpr std::size_t kMergeTokenCount = 15;

// A row's value for each merge token, in the order in which the tokens are replaced.
using MergeValues = std::array<std::wstring, kMergeTokenCount>;

// The place of a token in a template's text.
struct MergeToken {
  std::size_t position;  // 0-based
  std::size_t token;     // 0-based, in the order of replacement
};

// A text with merge tokens, taken apart once for all rows. The text is what the code page keeps.
struct MergeTemplate {
  std::wstring text;
  std::vector<MergeToken> tokens;    // in the order of the text
  bool values_may_complete_a_token;  // an opening bracket stands before a token, as in "[[Number]"
};

// The three texts of a message before any row is filled in.
struct MessageTemplates {
  MergeTemplate subject;
  MergeTemplate body;
  MergeTemplate alternative_body;
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

// A text with its tokens filled in. The pieces are parts of the template, constant, and values, or
// else `rewritten` as a whole.
struct MergedText {
  TextPieces pieces;
  std::unique_ptr<const std::wstring> rewritten;
};

// Fills the tokens in as if they were replaced one after another over the whole text: a value that
// holds a later token is replaced again. The values and the template must outlive the result.
MergedText Merge(const MergeTemplate& merge_template, const ValuesInCodePage& values);

// That sequence itself. Merge() takes it where a value may bring a token into being.
std::wstring MergeInSequence(std::wstring text, const MergeValues& values);

}  // namespace pxscheduler
