#include "platform/mime/quoted_printable.h"

#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <string>

#include "platform/code_page.h"

namespace pxscheduler {
namespace {

std::string Encoded(std::wstring_view text) {
  ByteBuffer out;
  AppendQuotedPrintable(text, out);
  return std::string(out.View());
}

TEST(QuotedPrintableTest, Texts) {
  using namespace std::string_literals;
  struct Case {
    std::wstring text;
    std::string encoded;
  };
  const Case cases[] = {
      {L"plain\ttext, 1 + 1", "plain\ttext, 1 + 1"},
      {L"a\r\nb\nc\rd\r\n", "a\r\nb\r\nc\r\nd\r\n"},
      {L"blank \ntab\t\r\n ", "blank=20\r\ntab=09\r\n=20"},
      {L"nul\0bell\x07"s, "nul=00bell=07"},
      {L"\u00e9\u20ac", "=C3=A9=E2=82=AC"},
      {std::wstring(1, static_cast<wchar_t>(0xD800)), "=EF=BF=BD"},
      {std::wstring(75, L'x') + L"y", std::string(75, 'x') + "=\r\ny"},
      {std::wstring(75, L'x') + L".", std::string(75, 'x') + "=\r\n.."},
      // The bytes of one character stay together, and so does what a trailing blank becomes.
      {std::wstring(70, L'x') + L"\u00e9", std::string(70, 'x') + "=\r\n=C3=A9"},
      {std::wstring(74, L'x') + L" \n", std::string(74, 'x') + "=\r\n=20\r\n"},
      {std::wstring(73, L'x') + L" \n", std::string(73, 'x') + "=20\r\n"},
  };
  for (const Case& test : cases) EXPECT_EQ(Encoded(test.text), test.encoded);
}

// As a mail program reads it, after the server undid the dot-stuffing.
std::string Decoded(const std::string& wire) {
  std::string text;
  std::istringstream lines(wire);
  for (std::string line; std::getline(lines, line);) {
    const bool ends = line.ends_with('\r');
    EXPECT_EQ(ends, !lines.eof());
    line.erase(line.size() - (ends ? 1 : 0));
    if (line.starts_with('.')) {
      EXPECT_TRUE(line.starts_with("..")) << line;
      line.erase(0, 1);
    }
    EXPECT_LE(line.size(), 76U);
    EXPECT_FALSE(line.ends_with(' ') || line.ends_with('\t')) << line;
    const bool is_soft = line.ends_with('=');
    line.erase(line.size() - (is_soft ? 1 : 0));
    for (std::size_t i = 0; i < line.size(); ++i) {
      const bool is_hex = line[i] == '=';
      text += is_hex ? static_cast<char>(std::stoi(line.substr(i + 1, 2), nullptr, 16)) : line[i];
      i += is_hex ? 2 : 0;
    }
    text += is_soft || !ends ? "" : "\n";
  }
  return text;
}

TEST(QuotedPrintableTest, AnyTextComesBack) {
  std::mt19937 random(20261116);
  const std::wstring alphabet =
      L"abcdefghijklmnopqrstuvwxyz....==   \t\n\n<>&\u00e9\u20ac\U0001F600";
  for (int round = 0; round < 2000; ++round) {
    std::wstring text;
    for (std::size_t i = random() % 400; i > 0; --i) text += alphabet[random() % alphabet.size()];
    ASSERT_EQ(Decoded(Encoded(text)), ToUtf8(text));
  }
}

}  // namespace
}  // namespace pxscheduler
