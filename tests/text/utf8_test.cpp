#include "text/utf8.h"

#include <gtest/gtest.h>

#include <string>

namespace pxscheduler {
namespace {

TEST(Utf8, WritesAndReadsEveryLength) {
  const std::wstring text = L"A\u00E9\u20AC\U0001F382";
  EXPECT_EQ(ToUtf8(text), "A\xC3\xA9\xE2\x82\xAC\xF0\x9F\x8E\x82");
  EXPECT_EQ(FromUtf8(ToUtf8(text)), text);
}

TEST(Utf8, ReplacesWhatIsMalformed) {
  struct Case {
    std::string bytes;
    std::wstring text;
  };
  const Case cases[] = {
      {"\x80z", L"\uFFFDz"},                              // no lead byte
      {"\xC0\xAF", L"\uFFFD\uFFFD"},                      // longer than necessary
      {"\xE2\x82", L"\uFFFD"},                            // cut off at the end
      {"\xE2\x82z", L"\uFFFDz"},                          // cut off by a letter
      {"\xED\xA0\x80", L"\uFFFD\uFFFD\uFFFD"},            // a surrogate
      {"\xF4\x90\x80\x80", L"\uFFFD\uFFFD\uFFFD\uFFFD"},  // beyond Unicode
  };
  for (const Case& each : cases) EXPECT_EQ(FromUtf8(each.bytes), each.text);
  EXPECT_EQ(ToUtf8(std::wstring(1, wchar_t{0xD800})), "\xEF\xBF\xBD");
  if (sizeof(wchar_t) == 4)
    EXPECT_EQ(ToUtf8(std::wstring{static_cast<wchar_t>(0x10FFFF), static_cast<wchar_t>(0x110000)}),
              "\xF4\x8F\xBF\xBF\xEF\xBF\xBD");
}

}  // namespace
}  // namespace pxscheduler
