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
    const ValuesInCodePage values =
        InCodePage(ansi_, ReadMergeValues(EnglishRegional(), rows_, L""));
    const MergeTemplate prepared = PrepareMergeTemplate(ansi_, text);
    return CanFillPlaces(prepared, values) ? Filled(prepared.parsed, values.texts)
                                           : MergeInSequence(prepared.text, values.texts);
  }

  Latin1CodePage ansi_;
  FakeRecordset rows_;
};

TEST_F(MergeFields, TheAttentionIsTheSalutation) {
  rows_.rows[0][L"FullName"] = L"Ann Lee";
  rows_.rows[0][L"Attention"] = L"Dear Ann";
  EXPECT_EQ(Merged(L"[Salutation], [Salutation]"), L"Dear Ann, Dear Ann");
}

TEST_F(MergeFields, OnlyTheExactTokensAreReplaced) {
  for (const wchar_t* text : {L"", L"no token", L"[first name] [FirstName] [First  Name]", L"[",
                              L"]", L"[First Name", L"First Name]"})
    EXPECT_EQ(Merged(text), text);
}

TEST_F(MergeFields, ValuesSurviveWhatTheyHold) {
  const std::wstring odd{L"a\0b\"'%1$s%\\[x]", 14};
  rows_.rows[0][L"Prefix"] = odd;
  EXPECT_EQ(Merged(L"[[Prefix]]"), L"[" + odd + L"]");
  rows_.rows[0][L"Prefix"] = L"\u0141ucja";
  EXPECT_EQ(Merged(L"[Prefix] \u0141"), L"?ucja ?");
}

// Texts and values made of parts that can come together as tokens.
TEST(CanFillPlaces, WhereThatGivesWhatReplacingOneAfterAnotherGives) {
  const std::wstring parts[] = {
      L"[",     L"]",      L"[Number]",    L"[First ", L"Name]", L"[First Name]", L"[Last Name]",
      L"[Last", L" Date]", L"[Full Name]", L" ",       L"x",     L"[Last Date]"};
  std::mt19937 random{20261116};
  const auto text_of = [&](std::size_t most) {
    std::wstring text;
    for (std::size_t count = random() % (most + 1); count > 0; --count)
      text += parts[random() % std::size(parts)];
    return text;
  };
  const Latin1CodePage ansi;
  int filled = 0;
  for (int round = 0; round < 20000; ++round) {
    MergeValues values;
    for (std::wstring& value : values) {
      value = text_of(2);
      if (round % 2 == 0) std::erase(value, L'[');
    }
    const std::wstring text = text_of(8);
    const MergeTemplate prepared = PrepareMergeTemplate(ansi, text);
    if (!CanFillPlaces(prepared, InCodePage(ansi, values))) continue;
    ++filled;
    ASSERT_EQ(Filled(prepared.parsed, values), MergeInSequence(text, values));
  }
  EXPECT_GT(filled, 5000);
}

}  // namespace
}  // namespace pxscheduler
