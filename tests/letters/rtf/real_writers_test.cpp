// Documents that real writers made: the text is what the same writer exports as plain text, and the
// structure is there. samples/export makes them.
#include <gtest/gtest.h>

#include <cctype>
#include <string>

#include "letters/html/html_writer.h"
#include "letters/html/plain_text.h"
#include "letters/rtf/rtf_reader.h"
#include "platform/linux/icu_code_page.h"
#include "tests/support/scratch_folder.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

std::string ReadData(const std::string& name) {
  return ReadWholeFile(TESTS_FOLDER "/letters/rtf/samples/" + name);
}

std::string Converted(const std::string& rtf) {
  const IcuCodePages code_pages(L"1252");
  return WriteHtml(ReadRtf(rtf, code_pages), {11906, 16838, 1440, 1440, 1440, 1440});
}

// Letters and digits alone: writers differ in blanks, bullets, rules and in how they mark emphasis.
// The addresses of links, which the other plain texts lack, are left out.
std::string Letters(const std::wstring& text) {
  std::wstring letters;
  bool address = false;
  for (const wchar_t character : text) {
    if (character == L'<' || character == L'>') address = character == L'<';
    const bool ascii = character < 0x80;
    const bool punctuation = character == 0xFEFF || (character >= 0x2000 && character < 0x2070);
    if (address || (ascii ? std::isalnum(character) == 0 : punctuation)) continue;
    letters += character == L'\u2082' || character == L'\u00B2' ? L'2' : character;
  }
  return ToUtf8(letters);
}

std::size_t Count(const std::string& html, const std::string& what) {
  std::size_t count = 0;
  for (std::size_t at = html.find(what); at != std::string::npos; at = html.find(what, at + 1))
    ++count;
  return count;
}

class RealWriters : public testing::TestWithParam<std::string> {};

TEST_P(RealWriters, ExportTheSameText) {
  const std::string rtf = ReadData(GetParam() + ".rtf");
  ASSERT_FALSE(rtf.empty());
  EXPECT_EQ(Letters(PlainTextOfHtml(FromUtf8(Converted(rtf)))),
            Letters(FromUtf8(ReadData(GetParam() + ".txt"))));
}

TEST_P(RealWriters, ExportTheSameStructure) {
  const std::string html = Converted(ReadData(GetParam() + ".rtf"));
  for (const char* once : {"<h1", "<h2", "<table", "<sub", "[First Name]",
                           "href=\"https://sunset.example/offers?n=[Number]\""})
    EXPECT_EQ(Count(html, once), 1U) << once;
  EXPECT_NE(html.find("Čeština, ελληνικά, русский, 日本語 and 🎂 are"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Exports, RealWriters, testing::Values("libreoffice", "pandoc"),
                         [](const auto& export_of) { return export_of.param; });

TEST(LibreOfficeExport, KeepsListsAndMergedCells) {
  const std::string html = Converted(ReadData("libreoffice.rtf"));
  EXPECT_EQ(Count(html, "<ul"), 1U);
  EXPECT_EQ(Count(html, "<ol"), 1U);
  EXPECT_EQ(Count(html, "<li"), 5U);
  EXPECT_EQ(Count(html, "rowspan=\"2\""), 1U);
  EXPECT_EQ(Count(html, "colspan=\"2\""), 1U);
}

TEST(CodePages, ComeFromFontsAndTheDocument) {
  const std::string fonts =
      "{\\fonttbl{\\f0 A;}{\\f1\\fcharset238 B;}{\\f2\\fcharset204 C;}{\\f3\\fcharset128 D;}"
      "{\\f4\\cpg1253 E;}}";
  const auto text = [&](const std::string& rtf) {
    return ToUtf8(PlainTextOfHtml(FromUtf8(Converted(rtf))));
  };
  EXPECT_EQ(text("{\\rtf1\\ansicpg1250" + fonts + "\\'e8{\\f1\\'e8}{\\f2\\'e8}{\\f4\\'e8}}"),
            "\u010D\u010D\u0438\u03B8\n");
  // The second byte of a character, as an escape and as the letter that it is.
  EXPECT_EQ(text("{\\rtf1" + fonts + "\\f3\\'83\\'41\\'83A\\'83\\'5c x}"),
            "\u30A2\u30A2\u30BD x\n");
  EXPECT_EQ(text("{\\rtf1\\mac\\'8e\\'d0}{"), "\u00E9\u2013\n");
  EXPECT_EQ(text("{\\rtf1\\pc\\'82\\'9b}{"), "\u00E9\u00A2\n");
  EXPECT_EQ(text("{\\rtf1\\pca\\'82\\'9b}{"), "\u00E9\u00F8\n");
  EXPECT_EQ(text("{\\rtf1\\mac" + fonts + "\\'8e{\\f2\\'e8}}"), "\u00E9\u0438\n");
  EXPECT_EQ(text("{\\rtf1\\ansicpg65001 \xC3\xA9}"), "\u00E9\n");
}

}  // namespace
}  // namespace pxscheduler
