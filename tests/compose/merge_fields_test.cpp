#include "compose/merge_fields.h"

#include <gtest/gtest.h>

#include <random>

#include "platform/runtime_error.h"
#include "tests/support/fake_components.h"
#include "tests/support/fake_platform.h"

namespace pxscheduler {
namespace {

using namespace std::chrono_literals;

FakeRecordset::Row Client() {
  const DateTime birth{std::chrono::sys_days{1970y / 5 / 12}};
  return {{L"ProfileNumber", std::int64_t{4711}},
          {L"Prefix", L"Ms"},
          {L"FirstName", L"Zo\u00eb"},
          {L"LastName", L"O'Brien"},
          {L"FullName", L"Zo\u00eb O'Brien"},
          {L"Attention", std::monostate{}},
          {L"Phone", L"555 0100"},
          {L"Fax", std::monostate{}},
          {L"BirthDate", birth},
          {L"AnniversaryDate", L"not a date"},
          {L"TravelDate", DateTime{std::chrono::sys_days{2026y / 12 / 1}, 18h}},
          {L"ReturnDate", L"2026-12-08"},
          {L"FirstDate", std::monostate{}},
          {L"LastDate", L""}};
}

class MergeFields : public testing::Test {
 protected:
  MergeFields() { rows_.rows = {Client()}; }

  std::wstring Merged(const std::wstring& text) {
    const MergeValues values = ReadMergeValues(EnglishRegional(), rows_, L"Zoe@Example.org");
    return Merge(PrepareMergeTemplate(ansi_, text), InCodePage(ansi_, values));
  }
  void Set(const wchar_t* column, Value value) { rows_.rows[0][column] = std::move(value); }

  Latin1CodePage ansi_;
  FakeRecordset rows_;
};

TEST_F(MergeFields, EveryTokenTakesItsColumn) {
  EXPECT_EQ(Merged(L"[Number]|[Prefix]|[First Name]|[Last Name]|[Full Name]|[Salutation]|"
                   L"[Phone Number]|[Fax Number]|[Email Address]|[Birthday]|[Anniversary]|"
                   L"[Travel Date]|[Return Date]|[Start Date]|[Last Date]"),
            L"4711|Ms|Zo\u00eb|O'Brien|Zo\u00eb O'Brien|Zo\u00eb O'Brien|555 0100||"
            L"Zoe@Example.org|May 12|not a date|12/1/2026|12/8/2026||");
  Set(L"Attention", L" ");
  EXPECT_EQ(Merged(L"[Salutation]"), L"Zo\u00eb O'Brien");
  Set(L"Attention", L"Dear Zo\u00eb");
  EXPECT_EQ(Merged(L"[Salutation], [Salutation]"), L"Dear Zo\u00eb, Dear Zo\u00eb");
}

TEST_F(MergeFields, OnlyTheExactTokensAreReplaced) {
  for (const wchar_t* text : {L"", L"no token", L"[first name] [FirstName] [First  Name]", L"[",
                              L"]", L"[First Name", L"First Name]"}) {
    EXPECT_EQ(Merged(text), text);
  }
  EXPECT_EQ(Merged(L"[[Prefix]]"), L"[Ms]");
}

TEST_F(MergeFields, LaterTokensInValuesAreReplacedAgain) {
  Set(L"FirstName", L"[Last Name]");
  Set(L"LastName", L"[First Name]");
  EXPECT_EQ(Merged(L"[First Name] [Last Name]"), L"[First Name] [First Name]");
}

TEST_F(MergeFields, ValuesSurviveWhatTheyHold) {
  const std::wstring odd{L"a\0b\"'%1$s%\\[x]", 14};
  Set(L"Prefix", odd);
  EXPECT_EQ(Merged(L"<[Prefix]>"), L"<" + odd + L">");
  const std::wstring long_name(5000, L'n');
  Set(L"Prefix", long_name);
  EXPECT_EQ(Merged(L"[Prefix]"), long_name);
  Set(L"Prefix", L"\u0141ucja");
  EXPECT_EQ(Merged(L"[Prefix] \u0141"), L"?ucja ?");
}

TEST_F(MergeFields, AMissingColumnIsAnError) {
  rows_.rows[0].erase(L"Fax");
  EXPECT_THROW(Merged(L""), RuntimeError);
}

// Texts and values made of pieces that can come together as tokens.
TEST(Merge, GivesWhatReplacingOneAfterAnotherGives) {
  const std::wstring pieces[] = {
      L"[",     L"]",      L"[Number]",    L"[First ", L"Name]", L"[First Name]", L"[Last Name]",
      L"[Last", L" Date]", L"[Full Name]", L" ",       L"x",     L"[Last Date]"};
  std::mt19937 random{20261116};
  const auto text_of = [&](std::size_t most) {
    std::wstring text;
    for (std::size_t count = random() % (most + 1); count > 0; --count) {
      text += pieces[random() % std::size(pieces)];
    }
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
    ASSERT_EQ(Merge(PrepareMergeTemplate(ansi, text), values), MergeInSequence(text, values));
  }
}

}  // namespace
}  // namespace pxscheduler
