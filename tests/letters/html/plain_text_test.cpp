#include "letters/html/plain_text.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "text/utf8.h"

namespace pxscheduler {
namespace {

// In UTF-8, so that a failure shows the text.
std::string Plain(const std::string& html) { return ToUtf8(PlainTextOfHtml(FromUtf8(html))); }

struct Case {
  std::string html;
  std::string text;
};

TEST(PlainText, RendersEachElement) {
  const std::string quotes = "<blockquote><dd><blockquote><dd>";
  const Case cases[] = {
      {"", ""},
      {"Dear [First Name],<br>hello &amp; welcome &lt;back&gt;",
       "Dear [First Name],\nhello & welcome <back>\n"},
      {"<p>One\ntwo  </p> <p>three</p>", "One two\n\nthree\n"},
      {"<p style='margin:0'>One</p><p style='margin: 0pt 0 12pt'>two</p><p "
       "style='margin:0'>three</p>",
       "One\ntwo\n\nthree\n"},
      {"<h1>Offers</h1><p>of May</p><h2>Spain</h2>text",
       "Offers\n======\n\nof May\n\nSpain\n-----\n\ntext\n"},
      {"<p style='margin-bottom:4.9pt'>One</p><p style='margin-top:0'>two</p>", "One\ntwo\n"},
      {"<h1></h1><h1>For [First Name]</h1>", "For [First Name]\n"},
      {"<p>Before</p><ul><li>one<li>two<ol start=3 type=i><li>deep</ol></ul><p>After</p>",
       "Before\n\n* one\n* two\n  iii. deep\n\nAfter\n"},
      {"<ol style='list-style-type:Upper-Roman' start=4><li>a<li value=9>b</ol>", "IV. a\nIX. b\n"},
      {"<ol type=A><li value=27>a<p>b</p></ol>", "AA. a\n\n    b\n"},
      {"<a href='https://a.example/?n=[Number]'>Book now</a>!",
       "Book now <https://a.example/?n=[Number]>!\n"},
      {"<a href='https://a.example/'>a.example</a> <a href='mailto:me@a.example'>me@a.example</a>",
       "a.example me@a.example\n"},
      {"<a href='https://b.example'>Book now </a>!", "Book now <https://b.example> !\n"},
      {"<a href='#top'>up</a> <a href='javascript:go()'>go</a> <a name='x'>here</a>",
       "up go here\n"},
      {"<a href='https://a.example'><img src='x.png' alt='Our logo'></a>",
       "Our logo <https://a.example>\n"},
      {"<head><title>T</title><style>p{}</style></head><body>seen<!-- not --><script>no()</script>"
       "<div style='display: none'>nor<p>this</p></div></body>",
       "seen\n"},
      {"a<br><br><br><br>b<p><br><br><br><br></p>c", "a\n\n\n\nb\n\n\nc\n"},
      {"a<hr>b", "a\n\n----------------------------------------\n\nb\n"},
      {"<pre>  kept\n\tas is</pre>", "  kept\n    as is\n"},
      {"<blockquote>said</blockquote>", "    said\n"},
      {quotes + quotes + quotes + "deep", std::string(40, ' ') + "deep\n"},
      {"caf\u00E9 &euro;5 &#x1F382;", "caf\u00E9 \u20AC5 \U0001F382\n"},
      {std::string("a\0b", 3), "a b\n"},
  };
  for (const Case& each : cases) EXPECT_EQ(Plain(each.html), each.text) << each.html;
}

TEST(PlainText, RendersTables) {
  const Case cases[] = {
      {"<table><tr><th>Trip</th><th>Price</th></tr>"
       "<tr><td>Lisbon, 4 nights</td><td align=right>399</td></tr>"
       "<tr><td>Rome</td><td><p style='text-align:right'>1,250</p></td></tr></table>",
       "Trip              Price\n----------------  -----\n"
       "Lisbon, 4 nights    399\nRome              1,250\n"},
      {"<table><tr><td rowspan=2>A</td><td>b</td></tr><tr><td>c</td></tr>"
       "<tr><td colspan=2>wide cell</td></tr></table>",
       "A  b\n   c\nwide cell\n"},
      // A table for the layout alone.
      {"<table><tr><td><p>One</p><p>Two</p></td></tr></table>", "One\n\nTwo\n"},
      {"<table><tr><td>a<br>b</td></tr><tr><td>c</td></tr></table>", "a\nb\nc\n"},
      {"<table><tr><td>out<table><tr><td>in</td><td>ner</td></tr></table></td>"
       "<td>x</td></tr></table>",
       "out      x\n\nin  ner\n"},
      {"<table><tr><td>a</td>x<td>b</td></tr></table>", "x\na  b\n"},
      {"x<table>lost?<tr><td>a</td></table>y", "x\n\nlost?\na\n\ny\n"},
  };
  for (const Case& each : cases) EXPECT_EQ(Plain(each.html), each.text) << each.html;
}

TEST(PlainText, WrapsTheWidestColumnAndStacksWhatIsTooHigh) {
  std::string sentence;
  for (int i = 0; i < 20; ++i) sentence += "words ";
  const std::string wrapped =
      Plain("<table><tr><td>Key</td><td>" + sentence + "</td></tr></table>");
  EXPECT_TRUE(wrapped.starts_with("Key  words words")) << wrapped;
  std::string page;
  for (int i = 0; i < 20; ++i) page += sentence;
  const std::string stacked = Plain("<table><tr><td>Key</td><td>" + page + "</td></tr></table>");
  EXPECT_TRUE(stacked.starts_with("Key\nwords words")) << stacked;
}

TEST(PlainText, KeepsLinesShortAndTokensWhole) {
  std::string html = "<ul><li>";
  for (int i = 0; i < 200; ++i) html += "[Anniversary] and [First Name], ";
  const std::string text = Plain(html);
  std::istringstream lines(text);
  std::size_t tokens = 0;
  for (std::string line; std::getline(lines, line);) {
    EXPECT_LE(line.size(), 72u);
    for (std::size_t at = line.find("[First Name]"); at != std::string::npos;
         at = line.find("[First Name]", at + 1))
      ++tokens;
  }
  EXPECT_EQ(tokens, 200u);
}

TEST(PlainText, SurvivesNestingWithoutEnd) {
  for (const std::string tag : {"<div>", "<ul><li>", "<table><tr><td>", "<span>", "<blockquote>"}) {
    std::string html;
    for (int i = 0; i < 20000; ++i) html += tag;
    html += "deep";
    for (int i = 0; i < 20000; ++i) html += "</div>";
    const std::string text = Plain(html + "<p>after</p>");
    EXPECT_TRUE(text.find("deep") != std::string::npos) << tag;
    EXPECT_TRUE(text.find("after") != std::string::npos) << tag;
  }
}

}  // namespace
}  // namespace pxscheduler
