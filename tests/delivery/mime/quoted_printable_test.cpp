#include "delivery/mime/quoted_printable.h"

#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "tests/delivery/mime/any_text.h"

namespace pxscheduler {
namespace {

std::string EncodedTemplate(const TextTemplate& text, const std::vector<std::wstring>& values) {
  QuotedPrintable encoder;
  encoder.SetTemplate(text);
  ByteBuffer out;
  encoder.Append(values, out);
  return std::string(out.View());
}

std::string Encoded(std::wstring_view text) {
  ByteBuffer out;
  QuotedPrintable::AppendText(text, out);
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
  for (int round = 0; round < 2000; ++round) {
    const std::wstring text = AnyText(400, random);
    ASSERT_EQ(Decoded(Encoded(text)), Lines(text));
  }
}

TEST(QuotedPrintableTest, EachMessageComesBack) {
  std::mt19937 random(20261116);
  for (int round = 0; round < 1000; ++round) {
    const TextTemplate text = AnyTemplate(random);
    const std::vector<std::wstring> values = AnyValues(text, random);
    ASSERT_EQ(Decoded(EncodedTemplate(text, values)), Lines(Filled(text, values)));
  }
}

TEST(QuotedPrintableTest, WhereConstantsBegin) {
  const std::wstring line(100, L'x');
  const std::string encoded_line = std::string(75, 'x') + "=\r\n" + std::string(25, 'x');
  struct Case {
    std::wstring before;
    std::wstring constant;
    std::string encoded;
  };
  const Case cases[] = {
      {L"Ann", L", welcome", "Ann, welcome"},
      {L"Ann", line + L"\n",
       "Ann" + std::string(72, 'x') + "=\r\n" + std::string(28, 'x') + "\r\n"},
      {std::wstring(75, L'A'), L".\n.", std::string(75, 'A') + "=\r\n..\r\n.."},
      {L"", L"." + line, ".." + std::string(74, 'x') + "=\r\n" + std::string(26, 'x')},
      {L"Ann ", L"\n" + line, "Ann=20\r\n" + encoded_line},
      {L"Ann\r", L"\n" + line, "Ann\r\n" + encoded_line},
      {L"Ann\r", L"\n", "Ann\r\n"},
      {L"Ann\r", L"\r\n" + line, "Ann\r\n\r\n" + encoded_line},
      {L"Ann", std::wstring(160, L'.') + L" \n",
       "Ann" + std::string(72, '.') + "=\r\n." + std::string(75, '.') + "=\r\n." +
           std::string(13, '.') + "=20\r\n"},
      // What is not plain is cut off where it is long.
      {L"Ann", L"=\n", "Ann=3D\r\n"},
      {L"Ann", line + L"=", "Ann=\r\n" + encoded_line + "=3D"},
      {L"Ann ", line + L"=", "Ann =\r\n" + encoded_line + "=3D"},
      {L"", line + L"=", encoded_line + "=3D"},
  };
  for (const Case& test : cases)
    EXPECT_EQ(EncodedTemplate({{L"", test.constant}, {0}}, {test.before}), test.encoded);
}

}  // namespace
}  // namespace pxscheduler
