#include "letters/html/text_layout.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "text/bracket_token.h"

namespace pxscheduler {
namespace {

// The length of the word at the start of the text, which is not blank. A bracketed token is part of
// a word with the blanks inside it.
std::size_t WordLength(std::wstring_view text) {
  std::size_t length = 0;
  while (length < text.size() && text[length] != L' ')
    length += std::max<std::size_t>(1, BracketTokenLength(text.substr(length)));
  return length;
}

// Calls `take` with each word of the line.
template <typename Take>
void ForEachWord(std::wstring_view line, Take take) {
  for (;;) {
    line.remove_prefix(std::min(line.find_first_not_of(L' '), line.size()));
    if (line.empty()) return;
    const std::size_t length = WordLength(line);
    take(line.substr(0, length));
    line.remove_prefix(length);
  }
}

template <typename Take>
void ForEachLine(std::wstring_view text, Take take) {
  for (;;) {
    const std::size_t end = text.find(L'\n');
    take(text.substr(0, end));
    if (end == std::wstring_view::npos) return;
    text.remove_prefix(end + 1);
  }
}

void AppendLine(std::wstring line, std::vector<std::wstring>& lines) {
  std::ranges::replace(line, L'\u00A0', L' ');
  line.erase(line.find_last_not_of(L' ') + 1);
  lines.push_back(std::move(line));
}

void LayOutBlock(const TextBlock& block, std::size_t width, std::vector<std::wstring>& lines) {
  const std::wstring* indent = &block.first_indent;
  std::size_t longest = 0;
  const auto finish = [&](const std::wstring& line) {
    longest = std::max(longest, line.size());
    AppendLine(*indent + line, lines);
    indent = &block.rest_indent;
  };
  ForEachLine(block.text, [&](std::wstring_view text) {
    if (block.preformatted) {
      finish(std::wstring(text));
      return;
    }
    std::wstring line;
    ForEachWord(text, [&](std::wstring_view word) {
      if (!line.empty() && indent->size() + line.size() + 1 + word.size() > width)
        finish(std::exchange(line, {}));
      if (!line.empty()) line += L' ';
      line += word;
    });
    finish(line);
  });
  if (block.underline != 0) AppendLine(*indent + std::wstring(longest, block.underline), lines);
}

}  // namespace

std::vector<std::wstring> LayOut(const std::vector<TextBlock>& blocks, std::size_t width) {
  std::vector<std::wstring> lines;
  for (const TextBlock& block : blocks) {
    if (!lines.empty()) lines.resize(lines.size() + std::size_t(block.blank_lines_before));
    LayOutBlock(block, width, lines);
  }
  return lines;
}

TextWidth WidthOf(const std::vector<TextBlock>& blocks) {
  TextWidth width;
  for (const TextBlock& block : blocks) {
    const std::size_t indent = std::max(block.first_indent.size(), block.rest_indent.size());
    ForEachLine(block.text, [&](std::wstring_view line) {
      width.natural = std::max(width.natural, indent + line.size());
      if (block.preformatted)
        width.least = std::max(width.least, indent + line.size());
      else
        ForEachWord(line, [&](std::wstring_view word) {
          width.least = std::max(width.least, indent + word.size());
        });
    });
  }
  return width;
}

}  // namespace pxscheduler
