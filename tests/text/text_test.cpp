#include "text/text.h"

#include <gtest/gtest.h>

#include "text/ascii_case.h"

namespace pxscheduler {
namespace {

TEST(Text, OnlyBothTagsTogetherMakeHtml) {
  for (const wchar_t* html : {L"<html>x</HTML>", L"</html> <Html>"})
    EXPECT_TRUE(IsHtmlDocument(html));
  for (const wchar_t* plain : {L"<html>x", L"x</html>", L"<html lang=en>x</html>"})
    EXPECT_FALSE(IsHtmlDocument(plain));
}

TEST(AsciiCase, KnowsTheLettersOfAscii) {
  EXPECT_EQ(LowerAscii("@AZ[`az{"), "@az[`az{");
  EXPECT_EQ(LowerAscii(L"A\u0041\u00C0"), L"aa\u00C0");
  for (const wchar_t letter : {L'A', L'Z', L'a', L'z'}) EXPECT_TRUE(IsAsciiLetter(letter));
  for (const wchar_t other : {L'@', L'[', L'`', L'{', L'\u00C0'})
    EXPECT_FALSE(IsAsciiLetter(other));
}

}  // namespace
}  // namespace pxscheduler
