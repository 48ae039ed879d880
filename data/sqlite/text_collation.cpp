#include "data/sqlite/text_collation.h"

#include <algorithm>
#include <optional>
#include <string>

#include "platform/letter_case.h"
#include "text/ascii_case.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

bool IsAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char character) { return static_cast<unsigned char>(character) < 0x80; });
}

std::string_view WithoutBlanksAtEnd(std::string_view text) {
  return text.substr(0, text.find_last_not_of(' ') + 1);
}

// The rest of the pattern after a set, and whether the character is in the set; nothing where the
// "[" at the pattern's start is never closed.
struct SetMatch {
  std::wstring_view rest;
  bool is_member;
};

std::optional<SetMatch> MatchSet(std::wstring_view pattern, wchar_t character) {
  std::size_t at = 1;
  const bool is_negated = pattern.substr(at).starts_with(L'^');
  if (is_negated) ++at;
  bool is_member = false;
  for (const std::size_t first = at; at < pattern.size(); ++at) {
    if (pattern[at] == L']' && at > first)
      return SetMatch{pattern.substr(at + 1), is_member != is_negated};
    if (at + 2 < pattern.size() && pattern[at + 1] == L'-' && pattern[at + 2] != L']') {
      if (character >= pattern[at] && character <= pattern[at + 2]) is_member = true;
      at += 2;
    } else if (character == pattern[at]) {
      is_member = true;
    }
  }
  return std::nullopt;
}

// Matches lower-case texts. After a mismatch only the last "%" takes one character more, which is
// enough, so the time is at most the product of the lengths.
bool Matches(std::wstring_view text, std::wstring_view pattern, wchar_t escape) {
  std::optional<std::wstring_view> pattern_after_percent;
  std::wstring_view text_after_percent;
  while (true) {
    if (pattern.starts_with(L'%') && escape != L'%') {
      pattern.remove_prefix(1);
      pattern_after_percent = pattern;
      text_after_percent = text;
      continue;
    }
    if (text.empty() && pattern.empty()) return true;
    bool matched = false;
    std::wstring_view rest;
    if (!text.empty() && !pattern.empty()) {
      const bool is_escaped = escape != 0 && pattern[0] == escape && pattern.size() > 1;
      const std::optional<SetMatch> set =
          !is_escaped && pattern[0] == L'[' ? MatchSet(pattern, text[0]) : std::nullopt;
      if (set) {
        matched = set->is_member;
        rest = set->rest;
      } else {
        matched = is_escaped ? pattern[1] == text[0] : pattern[0] == L'_' || pattern[0] == text[0];
        rest = pattern.substr(is_escaped ? 2 : 1);
      }
    }
    if (matched) {
      text.remove_prefix(1);
      pattern = rest;
      continue;
    }
    if (!pattern_after_percent || text_after_percent.empty()) return false;
    text_after_percent.remove_prefix(1);
    text = text_after_percent;
    pattern = *pattern_after_percent;
  }
}

}  // namespace

int CompareSqlText(std::string_view left, std::string_view right) {
  left = WithoutBlanksAtEnd(left);
  right = WithoutBlanksAtEnd(right);
  if (IsAscii(left) && IsAscii(right)) {
    const std::size_t shared = std::min(left.size(), right.size());
    for (std::size_t at = 0; at < shared; ++at) {
      const int difference = LowerAscii(left[at]) - LowerAscii(right[at]);
      if (difference != 0) return difference;
    }
    return left.size() < right.size() ? -1 : static_cast<int>(left.size() > right.size());
  }
  return LowerCase(FromUtf8(left)).compare(LowerCase(FromUtf8(right)));
}

bool MatchesSqlPattern(std::wstring_view text, std::wstring_view pattern, wchar_t escape) {
  const std::wstring lower_escape = LowerCase({&escape, 1});
  return Matches(LowerCase(text), LowerCase(pattern), lower_escape[0]);
}

}  // namespace pxscheduler
