#include "platform/rtf/whole_tokens.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace pxscheduler {
namespace {

// Makes a run of each piece, and joins what comes out with "|".
std::wstring Joined(const std::vector<std::wstring>& pieces) {
  std::wstring text;
  std::vector<Run> runs;
  for (const std::wstring& piece : pieces) {
    Run run;
    run.begin = static_cast<std::uint32_t>(text.size());
    run.length = static_cast<std::uint32_t>(piece.size());
    runs.push_back(run);
    text += piece;
  }
  MakeTokensWhole(text, runs);
  std::wstring joined;
  for (const Run& run : runs) {
    if (!joined.empty()) joined += L'|';
    joined += text.substr(run.begin, run.length);
  }
  return joined;
}

TEST(WholeTokens, GiveATokenToTheRunOfItsBracket) {
  EXPECT_EQ(Joined({L"a [", L"First", L" Name", L"] b", L"c"}), L"a [First Name]| b|c");
  EXPECT_EQ(Joined({L"[A", L"][B", L"] [C]"}), L"[A]|[B]| [C]");
  EXPECT_EQ(Joined({L"[[A", L"]"}), L"[[A]");
  EXPECT_EQ(Joined({L"[A", L"\u00AD\u200BB\u00A0", L"C]"}), L"[AB C]");
  EXPECT_EQ(Joined({L"[1,", L"2] [", L"open"}), L"[1,|2] [|open");
}

}  // namespace
}  // namespace pxscheduler
