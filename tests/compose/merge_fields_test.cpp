#include "compose/merge_fields.h"

#include <gtest/gtest.h>

#include <random>

#include "tests/support/fake_components.h"
#include "tests/support/fake_platform.h"

namespace pxscheduler {
namespace {

class MergeFields : public testing::Test {
 protected:
  std::wstring Merged(const std::wstring& text) const {
    const MergeValues values = ReadMergeValues(EnglishRegional(), rows_, L"");
    const MergeTemplate prepared = PrepareMergeTemplate(ansi_, text);
    const ValuesInCodePage merged_values = InCodePage(ansi_, values);
    return Joined(Merge(prepared, merged_values).pieces);
  }

  Latin1CodePage ansi_;
  FakeRecordset rows_;
};

TEST_F(MergeFields, TheAttentionIsTheSalutation) {
  rows_.row[L"FullName"] = L"Ann Lee";
  rows_.row[L"Attention"] = L"Dear Ann";
  EXPECT_EQ(Merged(L"[Salutation], [Salutation]"), L"Dear Ann, Dear Ann");
}

TEST_F(MergeFields, OnlyTheExactTokensAreReplaced) {
  for (const wchar_t* text : {L"", L"no token", L"[first name] [FirstName] [First  Name]", L"[",
                              L"]", L"[First Name", L"First Name]"})
    EXPECT_EQ(Merged(text), text);
}

TEST_F(MergeFields, ValuesSurviveWhatTheyHold) {
  const std::wstring odd{L"a\0b\"'%1$s%\\[x]", 14};
  rows_.row[L"Prefix"] = odd;
  EXPECT_EQ(Merged(L"[[Prefix]]"), L"[" + odd + L"]");
  rows_.row[L"Prefix"] = L"\u0141ucja";
  EXPECT_EQ(Merged(L"[Prefix] \u0141"), L"?ucja ?");
}

// Texts and values made of pieces that can come together as tokens.
TEST(Merge, GivesWhatReplacingOneAfterAnotherGives) {
  const std::wstring pieces[] = {
      L"[",     L"]",      L"[Number]",    L"[First ", L"Name]", L"[First Name]", L"[Last Name]",
      L"[Last", L" Date]", L"[Full Name]", L" ",       L"x",     L"[Last Date]"};
  std::mt19937 random{20261116};
  const auto text_of = [&](std::size_t most) {
    std::wstring text;
    for (std::size_t count = random() % (most + 1); count > 0; --count)
      text += pieces[random() % std::size(pieces)];
    return text;
  };
  const Latin1CodePage ansi;
  for (int round = 0; round < 20000; ++round) {
    MergeValues values;
    for (std::wstring& value : values) {
      value = text_of(2);
      if (round % 2 == 0) std::erase(value, L'[');
    }
    const std::wstring text = text_of(8);
    const MergeTemplate prepared = PrepareMergeTemplate(ansi, text);
    const ValuesInCodePage merged_values = InCodePage(ansi, values);
    ASSERT_EQ(Joined(Merge(prepared, merged_values).pieces), MergeInSequence(text, values));
  }
}

}  // namespace
}  // namespace pxscheduler
