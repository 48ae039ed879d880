#include "letters/rtf/whole_tokens.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "text/bracket_token.h"

namespace pxscheduler {
namespace {

bool IsUnseen(wchar_t character) {
  return character == L'\u00AD' || (character >= L'\u200B' && character <= L'\u200F') ||
         character == L'\u2060' || character == L'\uFEFF';
}

struct Token {
  std::size_t begin = 0;
  std::size_t end = 0;
  std::wstring plain;  // without what is unseen
};

// The next token at or after `from`; its end is 0 where there is none.
Token FindToken(std::wstring_view text, std::size_t from) {
  constexpr std::size_t kLongestToken = 80;
  for (std::size_t at = text.find(L'[', from); at != std::wstring_view::npos;
       at = text.find(L'[', at + 1)) {
    Token token{at, 0, {}};
    for (std::size_t i = at; i < std::min(text.size(), at + kLongestToken) && token.end == 0; ++i) {
      if (!IsUnseen(text[i])) token.plain += text[i] == L'\u00A0' ? L' ' : text[i];
      if (text[i] == L']') token.end = i + 1;
      if (text[i] == L'[' && i > at) break;
    }
    if (token.end > 0 && BracketTokenLength(token.plain) == token.plain.size()) return token;
  }
  return {};
}

}  // namespace

void MakeTokensWhole(std::wstring& text, std::vector<Run>& runs) {
  Token token = FindToken(text, 0);
  if (token.end == 0) return;
  std::wstring whole_text;
  std::vector<Run> whole_runs;
  whole_text.reserve(text.size());
  whole_runs.reserve(runs.size());
  std::size_t at = 0;  // what has been dealt with; within a token, its end
  for (Run run : runs) {
    if (run.kind != Run::Kind::kText) {
      whole_runs.push_back(run);
      continue;
    }
    const std::size_t end = std::size_t{run.begin} + run.length;
    const std::size_t begin = whole_text.size();
    while (at < end) {
      if (token.end > 0 && at == token.begin) {
        whole_text += token.plain;
        at = token.end;
        token = FindToken(text, at);
        continue;
      }
      const std::size_t stop = token.end > 0 ? std::min(end, token.begin) : end;
      whole_text.append(text, at, stop - at);
      at = stop;
    }
    if (whole_text.size() == begin) continue;
    run.begin = static_cast<std::uint32_t>(begin);
    run.length = static_cast<std::uint32_t>(whole_text.size() - begin);
    whole_runs.push_back(run);
  }
  text = std::move(whole_text);
  runs = std::move(whole_runs);
}

}  // namespace pxscheduler
