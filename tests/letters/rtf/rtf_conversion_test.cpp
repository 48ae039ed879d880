// From RTF to HTML: small documents written for the case.
#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <utility>

#include "letters/html/html_writer.h"
#include "letters/html/plain_text.h"
#include "letters/rtf/rtf_reader.h"
#include "tests/support/fake_platform.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

constexpr PageLayout kPage = {11906, 16838, 1440, 1440, 1440, 1440};

std::string Html(const std::string& rtf) { return WriteHtml(ReadRtf(rtf, FakeCodePages()), kPage); }

// What stands in the body, without line ends.
std::string WholeBody(const std::string& content) {
  const std::string html =
      Html(R"({\rtf1\ansi\deff0{\fonttbl{\f0\fswiss Arial;}{\f1\froman Times New Roman;})"
           R"({\f2\fcharset2 Symbol;}{\f3\fcharset2 Wingdings;}{\f4\fcharset2 Other;}})"
           R"({\colortbl;\red255\green0\blue0;\red0\green0\blue255;})" +
           content + "}");
  const std::size_t start = html.find(">\n", html.find("<body")) + 2;
  std::string body = html.substr(start, html.rfind("</body>") - start);
  std::erase(body, '\n');
  return body;
}

// The body in short: what elements have where nothing asks for another look is in capitals.
std::string Body(const std::string& content) {
  std::string body = WholeBody(content);
  for (const auto& [whole, brief] : {
           std::pair(R"(<p style="margin:0">)", "<P>"),
           {R"(<li style="margin:0">)", "<LI>"},
           {R"(<table cellspacing="0" cellpadding="0" border="0")", "<TABLE"},
           {"font-family:Arial,sans-serif;font-size:12pt", "FONT"},
           {"white-space:nowrap", "NOWRAP"},
       })
    body = std::regex_replace(body, std::regex(whole), brief);
  return body;
}

std::string Plain(const std::string& content) {
  return ToUtf8(PlainTextOfHtml(FromUtf8(WholeBody(content))));
}

// A bitmap of two pixels, and the file of its second one.
const std::string kTwoPixels =
    "28000000020000000100000001001800000000000800000000000000000000000000000000000000"
    "0102030405060000";
const std::string kSecondPixel =
    "Qk06AAAAAAAAADYAAAAoAAAAAQAAAAEAAAABABgAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAABAUGAA==";

std::string Blanks(int count) { return count > 0 ? Blanks(count - 1) + "&nbsp;" : ""; }

struct Case {
  std::string rtf;
  std::string html;
};

template <std::size_t kCount>
void Expect(const Case (&cases)[kCount]) {
  for (const Case& each : cases) EXPECT_EQ(Body(each.rtf), each.html) << each.rtf;
}

TEST(RtfConversion, WritesTheFileAround) {
  const std::string html = Html(R"({\rtf1\deff1{\fonttbl{\f0 A;}{\f1\fscript B;}}\f0 x{\f1 yy}})");
  EXPECT_TRUE(html.starts_with("<!DOCTYPE html>\n<html>"));
  EXPECT_TRUE(html.ends_with("</html>\n"));
  EXPECT_NE(html.find("charset=utf-8"), std::string::npos);
  EXPECT_NE(html.find("@page{size:595.3pt 841.9pt;margin:72pt}"), std::string::npos);
  EXPECT_NE(html.find("width:595.3pt;max-width:100%;padding:72pt;font-family:B,cursive"),
            std::string::npos);
}

TEST(RtfConversion, Characters) {
  Expect({
      {R"(a\'e9\emdash\endash\emspace\enspace\qmspace\bullet\lquote\rquote\ldblquote x\rdblquote)"
       R"(\zwj\zwnj\zwbo\ltrmark\rtlmark\~y\_z\lbr)",
       "<P>a\u00E9\u2014\u2013\u2003\u2002\u2005\u2022\u2018\u2019\u201Cx\u201D"
       "\u200D\u200C\u200B\u200E\u200F&nbsp;y\u2011z<br></p>"},
      {R"(\\ \{ \} < & >)", "<P>\\ { } &lt; &amp; &gt;</p>"},
      {R"(\uc1\u8364?5 \u8364\'805 {\uc2\u8364ab5}\uc0\u8364 5)",
       "<P>\u20AC5 \u20AC5 \u20AC5\u20AC5</p>"},
      {R"(\u-8318?\u-10180?\u-8318? \u-8318?)", "<P>\uFFFD\U0001F382 \uFFFD</p>"},
      {"\\u8226\\par next", "<P>\u2022</p><P>next</p>"},
      {R"(\f2 \'b7\'61)", "<P>\u2022\u03B1</p>"},
      {R"({\f3 \'fc\'a7\'01}{\f4 \u-3844?}\u-3913?)",
       "<P>\u2714\u25AA\u2714<span style=\"font-family:Arial,sans-serif\">\u2022</span></p>"},
      {R"(a{\upr{b?{\b c}}{\*\ud{\u8364?c}}}d)", "<P>a\u20ACcd</p>"},
      {R"({\v{\upr{gone}{\*\ud gone}}}{\*\x{\upr{gone}{\*\ud gone}}}{\*\ud kept})", "<P>kept</p>"},
      {"a  b\\line  c", "<P>a &nbsp;b<br>&nbsp;c</p>"},
      {R"({\v hidden}{\*\unknown {gone}}{\known kept}{\header h}{\footerf f}{\info{\title t}})"
       R"({\*\annotation{\b a}})",
       "<P>kept</p>"},
      // Words without the number that they take.
      {R"(\fs48\fs x\deftab9\deftab\tab\uc2\uc\u8364?y)", "<P>x" + Blanks(10) + "\u20ACy</p>"},
      {R"(\tx720\tx31680 xxxxxxxxxx\line\tab y\tab z)",
       "<P>xxxxxxxxxx<br>" + Blanks(12) + "y" + Blanks(80) + "z</p>"},
      {"a\\\nb", "<P>a</p><P>b</p>"},
      {R"(a\'1f\'7f\'9f\u65534?\u65535?\'a0b)", "<P>a&nbsp;b</p>"},
      {R"(\f2 {\field{\*\fldinst HYPERLINK "b"}{\fldrslt c}})",
       "<P><a href=\"b\" style=\"color:#000000;text-decoration:none\">\u03C7</a></p>"},
  });
}

TEST(RtfConversion, CharacterFormats) {
  Expect({
      {R"(plain text {\b bold}{\i slanted}{\ul under}{\strike gone})",
       "<P>plain text <b>bold</b><i>slanted</i><u>under</u><s>gone</s></p>"},
      {R"(much plain text {\cf1\highlight2 red}{\f1\fs40 big})",
       "<P>much plain text <span style=\"color:#ff0000;background-color:#0000ff\">red</span>"
       "<span style=\"font-family:'Times New Roman',serif;font-size:20pt\">big</span></p>"},
      {R"(CO{\sub 2} m{\super 2} {\scaps s}{\caps c})",
       "<P>CO<sub>2</sub> m<sup>2</sup> <span style=\"font-variant:small-caps\">s</span>"
       "<span style=\"text-transform:uppercase\">c</span></p>"},
      {R"({\ul a\ulnone b}{\up6 c\up0 d\dn e\nosupersub f}\cf1\cf g)",
       "<P><u>a</u>b<sup>c</sup>d<sub>e</sub>fg</p>"},
      {R"(all of it \b\b0\b bold)", "<P>all of it <b>bold</b></p>"},
      {R"({\cf1\i much red text}, plain)",
       "<p style=\"margin:0;color:#ff0000;font-style:italic\">much red text"
       "<span style=\"color:#000000;font-style:normal\">, plain</span></p>"},
      {R"(\b one {\lang1033 run} of \b1{\*\x}bold)",
       "<p style=\"margin:0;font-weight:bold\">one run of bold</p>"},
  });
}

TEST(RtfConversion, ParagraphFormats) {
  Expect({
      {R"(\qc\sb120\sa240\li720\fi-360\ri100 x\par\pard y)",
       "<p style=\"margin:6pt 5pt 12pt 36pt;text-indent:-18pt;text-align:center\">x</p><P>y</p>"},
      {R"(\qr x\par\qj y\par\ql z)",
       R"(<p style="margin:0;text-align:right">x</p><p style="margin:0;text-align:justify">y</p>)"
       "<P>z</p>"},
      {R"(\sl360\slmult1 x\par\pard\sl-240 y\par\pard\sl300 z)",
       "<p style=\"margin:0;line-height:173%\">x</p>"
       "<p style=\"margin:0;line-height:12pt;mso-line-height-rule:exactly\">y</p>"
       "<p style=\"margin:0;line-height:15pt\">z</p>"},
      {R"(\brdrt\brdrdot\brdrw10\brdrcf1\brdrb\brdrdash\shading2500 x)",
       "<div style=\"border-top:0.5pt dotted #ff0000;border-bottom:0.75pt dashed #000000;"
       "background-color:#c0c0c0\"><P>x</p></div>"},
      {R"(\box\brdrs\brdrw20\brsp40\cbpat1\shading2500 a\par b\par\pard c)",
       "<div style=\"border:1pt solid #000000;padding:2pt;background-color:#ff0000\"><P>a</p>"
       "<P>b</p></div><P>c</p>"},
      {R"(\brdrdb\brdrb\brdrdb\brdrw\brdrr\brdrs\brdrw300\brdrt\brdrs\brdrbtw\brdrdot x)",
       "<div style=\"border-top:0.75pt solid #000000;border-right:12.75pt solid #000000;"
       "border-bottom:2.25pt double #000000\"><P>x</p></div>"},
      {R"(\box\brdrs\brsp2000\brdrl\brdrnone a\par\pard\box\brdrs\brdrl\brdrnone b)",
       "<div style=\"border-top:0.75pt solid #000000;border-right:0.75pt solid #000000;"
       "border-bottom:0.75pt solid #000000;padding:72pt 72pt 72pt 0\"><P>a</p></div>"
       "<div style=\"border-top:0.75pt solid #000000;border-right:0.75pt solid #000000;"
       "border-bottom:0.75pt solid #000000\"><P>b</p></div>"},
      // What hangs out of the paragraph stands in its box.
      {R"(\box\brdrs\brdrw20\li400\fi-200 a\par\pard c)",
       "<div style=\"margin:0 0 0 10pt;border:1pt solid #000000\">"
       "<p style=\"margin:0 0 0 10pt;text-indent:-10pt\">a</p></div><P>c</p>"},
      {R"(\sl240\slmult1 x\par\pard\sl240 y\par\pard\sl360\sl0\rtlpar\qr z\par\ql u\par\ltrpar v)",
       "<P>x</p><P>y</p><p style=\"margin:0\" dir=\"rtl\">z</p>"
       "<p style=\"margin:0;text-align:left\" dir=\"rtl\">u</p><P>v</p>"},
      {R"(\li40000\outlinelevel5 a\par\outlinelevel6\li b\par\outlinelevel c)",
       "<h6 style=\"margin:0 0 0 "
       "1584pt;font-size:12pt;font-weight:normal\">a</h6><P>b</p><P>c</p>"},
      {R"(\htmautsp\sa40 a\par\sb60\sa0 b)",
       "<p style=\"margin:0 0 2pt\">a</p><p style=\"margin:3pt 0 0\">b</p>"},
      {R"(a\sect b)", "<P>a</p><p style=\"margin:0;page-break-before:always\">b</p>"},
      {R"(a\par\par\sbkpage b\page c)",
       "<P>a</p><P>&nbsp;</p><P>b</p><p style=\"margin:0;page-break-before:always\">c</p>"},
      {R"(a\column b\sect\sectd\sbknone c\sect d\sect\sectd e\sect\trowd\cellx9\intbl f\cell\row)",
       "<P>a</p><P>b</p><P>c</p><P>d</p><p style=\"margin:0;page-break-before:always\">e</p>" +
           Body(R"(\trowd\cellx9\intbl\pagebb f\cell\row)")},
      {R"(\li-100\sb60\s4\contextualspace\sa40 a\par b\par\s5 c)",
       "<p style=\"margin:3pt 0 0;margin-left:-5pt\">a</p>"
       "<p style=\"margin:0 0 2pt;margin-left:-5pt\">b</p>"
       "<p style=\"margin:5pt 0 2pt;margin-left:-5pt\">c</p>"},
      {R"({\stylesheet{\s3 heading 2;}}\s3 Title\par\pard\plain text and more)",
       "<h2 style=\"margin:0;font-size:12pt;font-weight:normal\">Title</h2><P>text and more</p>"},
  });
}

TEST(RtfConversion, KeepsTokensWhole) {
  Expect({
      {"Dear {\\b [Fir}{\\i st Na}me], hello to you",
       "<P>Dear <b>[First Name]</b>, hello to you</p>"},
      {R"([First\~Name] [La\-st\u8203? Name] [\u70?irst Name])",
       "<P>[First Name] [Last Name] [First Name]</p>"},
      {R"(tokens {\b [A}{\i ][B}{\ul ] [C]} {\b [[D}])",
       "<P>tokens <b>[A]</b><i>[B]</i><u> [C]</u> <b>[[D]</b></p>"},
      {R"(see [{\b 1}{\i -}2] or [{\b not\line one}] [{\b open})",
       "<P>see [<b>1</b><i>-</i>2] or [<b>not<br>one</b>] [<b>open</b></p>"},
      {R"({\field{\*\fldinst HYPERLINK "https://a.example/?n=%5BFirst%20Name%5D&x=%5B1"})"
       "{\\fldrslt go}}",
       R"(<P><a href="https://a.example/?n=[First Name]&amp;x=%5B1" )"
       R"(style="color:#000000;text-decoration:none">go</a></p>)"},
  });
}

TEST(RtfConversion, FieldsNotesAndBookmarks) {
  Expect({
      {R"({\field{\*\fldinst{HYPERLINK \\l "top"}}{\fldrslt{\ul\cf2 up}}} {\*\bkmkstart top})"
       R"({\*\bkmkend top}{\*\bkmkstart other}here it is)",
       R"(<P><a href="#top" style="color:#0000ff;text-decoration:underline">up</a> )"
       "<a name=\"top\"></a>here it is</p>"},
      {R"({\field{\*\fldinst HYPERLINK "b"}{\fldrslt c{\i d}{\strike e}}})",
       "<P><a href=\"b\" style=\"color:#000000;text-decoration:none\">c<i>d</i><s>e</s></a></p>"},
      {R"(on {\field{\*\fldinst DATE}{\fldrslt 12 May}})", "<P>on 12 May</p>"},
      {R"(text{\super\chftn{\footnote\pard\plain{\super\chftn} the note}} goes on\par end)",
       R"(<P>text<sup>1</sup> goes on</p><P>end</p><hr size="1" width="33%" align="left"><P>)"
       "<sup>1</sup> the note</p>"},
      {R"(before {\shp{\*\shpinst{\sp{\sn a}{\sv 1}}{\shptxt in a box\par}}{\shprslt x}}after)",
       "<P>in a box</p><P>before after</p>"},
  });
}

// Stops that blanks cannot stand for make the line one row of cells.
TEST(RtfConversion, TabStops) {
  const auto in_div = [](const std::string& margin, const std::string& lines) {
    return "<div style=\"margin:" + margin + "\">" + lines + "</div>";
  };
  // A line: how wide it is, its cells, how far it stands in, and what its font has besides.
  const auto row = [](const std::string& width, const std::string& cells,
                      const std::string& margin = "0", const std::string& font = "") {
    return R"(<TABLE style="margin:)" + margin + ";border-collapse:collapse" + width + ";FONT" +
           font + R"("><tr valign="bottom">)" + cells + "</tr></table>";
  };
  const std::string text = R"(<td style="NOWRAP">)";
  const std::string right = R"(<td style="text-align:right;NOWRAP">)";
  const std::string gap = R"(<td style="width:100%">&nbsp;</td>)";
  const auto right_of = [](const std::string& width, const std::string& cell) {
    return "<td style=\"width:" + width + ";text-align:right;NOWRAP\">" + cell + "</td>";
  };
  const auto leader = [](const std::string& style) {
    return "<td style=\"width:100%;border-bottom:1pt " + style + " #000000\">&nbsp;</td>";
  };
  Expect({
      {R"(\tqr\tx5000 [First {\b Name]}\tab 12)",
       in_div("0", row(";width:250pt", text + "[First Name]</td>" + gap + right + "12</td>"))},
      {R"(\li400\fi-300\tqr\tldot\tx5000 a\tab [Number])",
       in_div("0 0 0 5pt",
              row(";width:245pt", text + "a</td>" + leader("dotted") + right + "[Number]</td>"))},
      {R"(\box\brdrs\brdrw20\li400\fi200\tqr\tx5000\tab 1)",
       in_div("0 0 0 20pt;border:1pt solid #000000",
              in_div("0 0 0 10pt", row(";width:220pt", right_of("220pt", "1"))))},
      // Lines of one paragraph, of which the first hangs; a heading.
      {R"(\li400\fi-200\tqr\tx5000 a\tab 1\line {\b b\line c}\tab 2)",
       in_div("0 0 0 10pt", row(";width:240pt", text + "a</td>" + gap + right + "1</td>") +
                                in_div("0 0 0 10pt", "<b>b</b>") +
                                row(";width:230pt", text + "<b>c</b></td>" + gap + right + "2</td>",
                                    "0 0 0 10pt"))},
      {R"({\stylesheet{\s1 heading 1;}}\s1\b\tqr\tx5000\tab Title)",
       in_div("0;font-weight:bold",
              row(";width:250pt", right_of("250pt", "Title"), "0", ";font-weight:bold"))},
      {R"(\tqr\tx1000\tqc\tx3000\tab 1\tab two\tab end)",
       in_div("0", row("", right_of("50pt", "1") +
                               R"(<td style="width:85pt">&nbsp;</td>)"
                               R"(<td style="width:30pt;text-align:center;NOWRAP">two</td>)"
                               R"(<td style="width:15pt">&nbsp;</td><td>end</td>)"))},
      {R"(\tlul\tx3000 Name:\tab)",
       in_div("0", row(";width:150pt", text + "Name:</td>" + leader("solid")))},
      {R"(\tx3000\tqr\tx6000 a\tab b\tab 1)",
       in_div("0", row(";width:300pt", R"(<td style="width:150pt">a</td>)" + text + "b</td>" +
                                           R"(<td style="width:138pt">&nbsp;</td>)" + right +
                                           "1</td>"))},
      {R"(\tqr\tx1000\tqr\tx3000\tab 1\tab 2)",
       in_div("0", row(";width:150pt", right_of("50pt", "1") + right_of("100pt", "2")))},
      {R"(\tqdec\tx2000\tab 9)", in_div("0", row(";width:100pt", right_of("100pt", "9")))},
      {R"(\tqdec\tx2000\tab 9.50)",
       in_div("0", row(";width:115.35pt", right_of("115.35pt", "9.50")))},
  });
  for (const auto& [word, line] : {std::pair("tldot", "1pt dotted"),
                                   {"tlmdot", "1pt dotted"},
                                   {"tlhyph", "1pt dashed"},
                                   {"tlul", "1pt solid"},
                                   {"tlth", "2pt solid"},
                                   {"tleq", "3pt double"}})
    EXPECT_NE(WholeBody("\\" + std::string(word) + "\\tx3000 a\\tab").find(line), std::string::npos)
        << word;
  // Blanks stay where they do, and where cells would not.
  for (const char* rtf :
       {"\\tx3000 a\\tab b", R"(\tx1000\tqr\tx9000 a\tab b)", R"(\tx3000 a\tab b\line c)",
        R"(\qc\tqr\tx5000 a\tab b)", R"(\tqr\tb500\tx5000 a\tab b)", R"(\tqr\pard\tx5000 a\tab b)",
        "\\tqr\\tx5000 a"})
    EXPECT_EQ(WholeBody(rtf).find("<table"), std::string::npos) << rtf;
  EXPECT_EQ(Plain(R"(\tqr\tx5000 Lisbon\tab 899\par Rome\tab 1,099\par)"),
            "Lisbon  899\nRome  1,099\n");
  EXPECT_EQ(Plain(R"(\tqr\tx5000 Lisbon\tab 899\line Prices for two\line Rome\tab 1,099\par)"),
            "Lisbon  899\nPrices for two\nRome  1,099\n");
}

TEST(RtfConversion, Lists) {
  const std::string tables =
      R"({\*\listtable{\list{\listlevel\levelnfc23{\leveltext\'01\u8226 ?;}{\levelnumbers;}})"
      R"({\listlevel\levelnfc4\levelstartat3{\leveltext\'02\'01.;}}\listid7}})"
      R"({\*\listoverridetable{\listoverride\listid7\ls1}})";
  Expect({
      {tables + R"(\ls1\ilvl0\li720\fi-360{\listtext\bullet\tab}one\par\ilvl1\li1440{\listtext c.)"
                R"(\tab}deep\par\ilvl0\li720 two\par\pard\plain after)",
       "<ul style=\"margin:0;padding:0 0 0 36pt;list-style-type:disc\"><LI>one"
       R"(<ol type="a" start="3" style="margin:0;padding:0 0 0 36pt"><LI>deep</li></ol></li>)"
       "<LI>two</li></ul><P>after</p>"},
      {R"(\li360\fi-360{\pntext 1.\tab}{\*\pn\pnlvlbody\pnstart7\pnstart\pndec{\pntxta .}}a)"
       R"(\par{\pntext 2.\tab}b\par\pard c)",
       "<ol style=\"margin:0;padding:0 0 0 18pt\"><LI>a</li><LI>b</li></ol><P>c</p>"},
      // The old form with levels, of which the outer one goes on after the inner one.
      {R"({\pntext 1.}{\*\pn\pnlvl\pndec{\pntxta .}}\li360 a\par\pard{\pntext b.}{\*\pn\pnlvl2)"
       R"(\pnlcltr\pnstart2{\pntxta .}}\li720 b\par\pard{\pntext 2.}{\*\pn\pnlvl1\pndec)"
       "{\\pntxta .}}\\li360 c",
       "<ol style=\"margin:0;padding:0 0 0 18pt\"><LI>a"
       R"(<ol type="a" start="2" style="margin:0;padding:0 0 0 18pt"><LI>b</li></ol></li><LI>c)"
       "</li></ol>"},
      // Items without an indent, and one with more than the item before it.
      {R"({\*\pn\pnlvlblt{\pntxtb\bullet}}a\par\li200 b\par\li0 c)",
       "<ul style=\"margin:0;padding:0 0 0 12pt;list-style-type:disc\"><LI>a</li>"
       "<li style=\"margin:0 0 0 10pt\">b</li><LI>c</li></ul>"},
      {R"({\*\pn\pnlvlblt{\pntxtb\bullet}}{\pntext{\pict\pngblip 89504e470d0a1a0a00}\tab}a)",
       "<ul style=\"margin:0;padding:0 0 0 12pt;list-style-type:disc\"><LI>a</li></ul>"},
      {R"(\box\brdrs a\par{\*\pn\pnlvlblt{\pntxtb -}}b\par\pard{\*\pn\pnlvlblt{\pntxtb '}}c)",
       "<div style=\"border:0.75pt solid #000000\"><P>a</p></div>"
       "<ul style=\"margin:0;padding:0 0 0 12pt;list-style-type:'-\u00A0'\">"
       "<li style=\"margin:0;border:0.75pt solid #000000\">b</li></ul>"
       "<ul style=\"margin:0;padding:0 0 0 12pt;list-style-type:disc\"><LI>c</li></ul>"},
      // A marker that HTML's lists cannot make stays text.
      {R"({\*\pn\pnlvlbody\pndec{\pntxta )}}{\pntext 1) }a)", "<P>1) a</p>"},
  });
  EXPECT_EQ(Plain(tables + R"(\ls1 one\par\ilvl1 x\par y\par\ilvl0 two\par)"),
            "* one\n  c. x\n  d. y\n* two\n");
  // References to one list count on together, unless one has a start of its own.
  EXPECT_EQ(
      Plain(
          R"({\*\listtable{\list{\listlevel\levelnfc0\levelstartat4\levelstartat{\leveltext\'02\'00.;}}\listid7}})"
          R"({\*\listoverridetable{\listoverride\listid7\ls1}{\listoverride\listid7\ls2})"
          R"({\listoverride\listid7{\lfolevel\listoverridestartat\levelstartat5}\ls3}}\ls1 a\par)"
          R"(\ls0 x\par\ls2 b\par\ls3 c\par\ls1 d\par)"),
      "1. a\nx\n2. b\n5. c\n3. d\n");
  // What a marker shows counts where a list begins.
  const auto item = [](const std::string& style, const std::string& marker) {
    return "\\pard{\\pntext " + marker + R"(.\tab}{\*\pn\pnlvlbody\)" + style +
           "{\\pntxta .}}y\\par ";
  };
  EXPECT_EQ(Plain(item("pndec", "1") + item("pnlcltr", "a") + item("pndec", "2") +
                  item("pndec", "3") + item("pnucrm", "XLIV") + item("pnlcltr", "z")),
            "1. y\na. y\n2. y\n3. y\nXLIV. y\nz. y\n");
  EXPECT_EQ(Plain(item("pndec", "0") + item("pnlcltr", "1") + item("pnlcrm", "iiii") +
                  item("pndec", "99999999999")),
            "1. y\na. y\ni. y\n1. y\n");
}

TEST(RtfConversion, Tables) {
  const std::string cell = "<td style=\"width:72pt\">";
  const std::string table = "<TABLE style=\"border-collapse:collapse;width:";
  const std::string font = ";FONT\">";
  const std::string row = "<tr valign=\"top\">";
  const auto p = [](const std::string& text) { return "<P>" + text + "</p>"; };
  Expect({
      {R"(\trowd\trgaph0\cellx1440\cellx2880\intbl a\cell b\cell\row\pard after)",
       table + "144pt" + font + row + cell + p("a") + "</td>" + cell + p("b") +
           "</td></tr></table>" + p("after")},
      // Merged across, then down; an end of a cell that is missing.
      {R"(\trowd\trgaph0\clmgf\cellx1440\clmrg\cellx2880\intbl wide\cell\cell\row\trowd\trgaph0)"
       R"(\clvmgf\cellx1440\cellx2880\intbl high\cell b\cell\row\trowd\trgaph0\clvmrg\cellx1440)"
       R"(\cellx2880\intbl\cell c\row)",
       table + "144pt" + font + row + R"(<td colspan="2" style="width:144pt">)" + p("wide") +
           p("&nbsp;") + "</td></tr>" + row + R"(<td rowspan="2" style="width:72pt">)" + p("high") +
           "</td>" + cell + p("b") + "</td></tr>" + row + "<td>" + p("c") + "</td></tr></table>"},
      {R"(\trowd\trqc\trgaph0\trpaddt100\trpaddb100\trbrdrb\brdrs\brdrw20\trbrdrl\brdrdot\trbrdrt)"
       R"(\brdrdash\trrh600\trhdr\clvertalc\clbrdrt\brdrdb\brdrw45\brdrcf1\clbrdrl\brdrs\clbrdrr)"
       R"(\brdrdot\clcbpat2\cellx1440\clvertalb\clshdng5000)"
       R"(\cellx2880\intbl a\cell b\cell\row)",
       R"(<TABLE align="center" style="border-collapse:collapse;width:144pt)" + font + row +
           "<th style=\"width:72pt;height:30pt;padding:5pt 0;border-top:2.25pt double #ff0000;"
           "border-right:0.75pt dotted #000000;border-left:0.75pt solid #000000;"
           "background-color:#0000ff;vertical-align:middle;font-weight:normal;text-align:left\">" +
           p("a") +
           "</th><th style=\"width:72pt;height:30pt;padding:5pt 0;border-top:0.75pt dashed "
           "#000000;border-bottom:1pt solid #000000;border-left:0.75pt dotted #000000;"
           "background-color:#808080;vertical-align:bottom;font-weight:normal;text-align:left\">" +
           p("b") + "</th></tr></table>"},
      // Spaces do not add up across the edges of a table and its cells.
      {R"(\sa100 x\par\trowd\trgaph0\trqr\trleft720\cellx2160\intbl\sb60 a\cell\row\pard\sb40 b)",
       R"(<p style="margin:0 0 5pt">x</p><TABLE align="right" style="border-collapse:collapse;)"
       "width:72pt" +
           font + row + cell +
           "<p style=\"margin:3pt 0 5pt\">a</p></td></tr></table>"
           "<p style=\"margin:2pt 0 0\">b</p>"},
      {R"(\trowd\trgaph-9\trleft720\cellx2160\cellx3600\intbl a\cell\row)",
       table + "144pt;FONT;margin-left:36pt\">" + row + cell + p("a") + "</td>" + cell +
           "</td></tr></table>"},
      // Edges that only some rows have.
      {R"(\trowd\trgaph0\cellx2880\intbl a\cell\row\trowd\trgaph0\cellx1440\cellx2885\intbl b)"
       R"(\cell c\cell\row)",
       table + "144pt" + font + row + R"(<td colspan="2" style="width:144pt">)" + p("a") +
           "</td></tr>" + row + cell + p("b") + "</td><td style=\"width:72.25pt\">" + p("c") +
           "</td></tr></table>"},
      {R"(\trowd\trgaph0\cellx2880\intbl out\par\itap2 in\nestcell{\*\nesttableprops\trowd)"
       R"(\trgaph0\cellx1440\nestrow}\itap1 more\cell\row)",
       table + "144pt" + font + row + "<td style=\"width:144pt\">" + p("out") + table + "72pt" +
           font + row + cell + p("in") + "</td></tr></table>" + p("more") + "</td></tr></table>"},
  });
}

TEST(RtfConversion, Pictures) {
  const std::string png = "89504e470d0a1a0a00";
  Expect({
      {"{\\pict\\pngblip\\picw10\\pich10\\picwgoal1500\\pichgoal750\\picscalex50\\picscaley50\n" +
           png + R"({\*\picprop{\sp{\sn wzDescription}{\sv Our "logo"}}}})",
       R"(<P><img src="data:image/png;base64,iVBORw0KGgoA" width="50" height="25" alt="Our )"
       R"(&quot;logo&quot;" border="0"></p>)"},
      {std::string("{\\*\\shppict{\\pict\\jpegblip\\bin4 \xFF\xD8\xFF}}}{\\nonshppict{\\pict") +
           "\\wmetafile8 00}}z",
       R"(<P><img src="data:image/jpeg;base64,/9j/fQ==" alt="" border="0">z</p>)"},
      // In a shape, beside what a reader that knows no shapes shows, and in an embedded object.
      {R"({\shp{\*\shpinst{\sp{\sn pib}{\sv{\pict\pngblip )" + png +
           R"(}}}}{\shprslt{\pict\pngblip 00}}}z)",
       R"(<P><img src="data:image/png;base64,iVBORw0KGgoA" alt="" border="0">z</p>)"},
      // A shape's own size, cropping and description; the pictures of its fill are not shown.
      {R"({\field{\*\fldinst SHAPE}{\fldrslt{\shp{\*\shpinst\shpleft150\shptop-600\shpright900)"
       R"(\shpbottom0{\sp{\sn cropFromLeft}{\sv 32768}}{\sp{\sn pib}{\sv{\pict\picscalex30)"
       R"(\dibitmap0{\*\picprop{\sp{\sn shapeType}{\sv 75}}})" +
           kTwoPixels + R"(}}}{\sp{\sn fillBlip}{\sv{\pict\pngblip )" + png +
           R"(}}}{\sp{\sn wzDescription}{\sv A logo}}}{\shprslt x}}}})",
       "<P><img src=\"data:image/bmp;base64," + kSecondPixel +
           R"(" width="50" height="40" alt="A logo" border="0"></p>)"},
      // Two pictures in the text of a shape.
      {R"({\shp{\*\shpinst{\sp{\sn a}{\sv b}}{\shptxt{\pict\pngblip )" + png +
           R"(}{\pict\pngblip )" + png + "}}}}",
       R"(<P><img src="data:image/png;base64,iVBORw0KGgoA" alt="" border="0">)"
       R"(<img src="data:image/png;base64,iVBORw0KGgoA" alt="" border="0"></p>)"},
      {R"({\object\objemb{\*\objdata 0102}{\result{\pict\pngblip )" + png + "}}}",
       R"(<P><img src="data:image/png;base64,iVBORw0KGgoA" alt="" border="0"></p>)"},
      {"{\\pict\\wmetafile8 0102}only a metafile", "<P>only a metafile</p>"},
      {R"({\pict\dibitmap0\picwgoal600\pichgoal1500\piccropl300\piccropt-90\picscalex200 )" +
           kTwoPixels + "}",
       "<P><img src=\"data:image/bmp;base64," + kSecondPixel +
           R"(" width="40" height="100" alt="" border="0"></p>)"},
      // One that cannot be cropped is shown whole.
      {R"({\pict\pngblip\picwgoal600\pichgoal300\piccropl300 89504e470d0a1a0a00})",
       R"(<P><img src="data:image/png;base64,iVBORw0KGgoA" width="40" height="20" alt="" )"
       R"(border="0"></p>)"},
  });
}

TEST(RtfConversion, ReadsOnWhateverIsWrong) {
  const Case cases[] = {
      {"a}}} b", "a\n"},  // the document ends with its first group
      {"a{\\b b", "ab\n"},
      {"a\\bin999999999 b", "a\n"},
      {"a\\", "a}\n"},
      {"a\\'", "a\n"},
      {R"(\cell a\row\nestrow\cell\row b)", "a\n\nb\n"},
      {R"({\*\listoverridetable{\listoverride\listoverridestartat}}a)", "a\n"},
      {R"({\*\pn\pnlvl99\pndec{\pntxta .}}a)", "1. a\n"},
      {R"(\ls99\s99\f99\cf99\fs-5\li99999999999\u99999999999 ?a)", "a\n"},
      {R"({\pict\pngblip zz}{\field{\fldrslt a}}{\fldinst x}{\footnote)", "a\n"},
  };
  for (const Case& each : cases) EXPECT_EQ(Plain(each.rtf), each.html) << each.rtf;
  std::string deep = "a";
  for (int i = 0; i < 100'000; ++i) deep += "{\\b{\\i x";
  EXPECT_NE(Plain(deep).find("xxx"), std::string::npos);
  const std::string groups(100'000, '{');
  EXPECT_EQ(Plain(groups + R"({\*\unknown {gone}}{{\pict 00}}{\footnote{x}}{\v}\v0 kept)"),
            "xkept\n");
}

// Cut off anywhere, what is left is a document, and each merge token that was whole is in it.
TEST(RtfConversion, ReadsEveryBeginning) {
  const std::string whole =
      R"({\rtf1{\fonttbl{\f0 A;}}{\colortbl;\red1;}[T1]\trowd\cellx9{\b a\'e9\u8364?[T2]}\cell\row)"
      R"({\field{\*\fldinst HYPERLINK "[T3]"}{\fldrslt [T{\i 4]}}}{\pict\pngblip 8950\bin3 abc})"
      R"({\footnote [T5]}{\*\listtable{\list{\listlevel{\leveltext\'01.;}}\listid1}}})";
  std::ptrdiff_t tokens = 0;
  for (std::size_t length = 0; length <= whole.size(); ++length) {
    const std::string html = Html(whole.substr(0, length));
    EXPECT_TRUE(html.ends_with("</html>\n"));
    const std::regex token("\\[T\\d\\]");
    const auto found = std::distance(std::sregex_iterator(html.begin(), html.end(), token), {});
    EXPECT_GE(found, tokens) << length;
    tokens = found;
  }
  EXPECT_EQ(tokens, 5);
}

}  // namespace
}  // namespace pxscheduler
