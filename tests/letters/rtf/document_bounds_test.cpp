// What reading and writing a document costs, in bytes that are allocated: twice the document must
// not cost much more than twice as much, and a picture that is not kept must not be held.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <string>

#include "letters/html/html_writer.h"
#include "letters/html/plain_text.h"
#include "letters/rtf/rtf_reader.h"
#include "tests/support/fake_platform.h"
#include "text/utf8.h"

namespace {

struct Allocations {
  std::size_t all = 0;
  std::size_t held = 0;
  std::size_t most_held = 0;
};

// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): operator new has no other
// place
Allocations allocations;

constexpr std::size_t kRoom = alignof(std::max_align_t);  // for the size, before each block

}  // namespace

void* operator new(std::size_t size) {
  void* block = std::malloc(size + kRoom);
  if (block == nullptr) throw std::bad_alloc();
  *static_cast<std::size_t*>(block) = size;
  allocations.all += size;
  allocations.held += size;
  allocations.most_held = std::max(allocations.most_held, allocations.held);
  return static_cast<char*>(block) + kRoom;
}

void operator delete(void* block) noexcept {
  if (block == nullptr) return;
  void* start = static_cast<char*>(block) - kRoom;
  allocations.held -= *static_cast<std::size_t*>(start);
  std::free(start);
}

void operator delete(void* block, std::size_t) noexcept { operator delete(block); }

namespace pxscheduler {
namespace {

std::string Repeated(const std::string& text, std::size_t count) {
  std::string all;
  all.reserve(text.size() * count);
  for (std::size_t i = 0; i < count; ++i) all += text;
  return all;
}

// What the whole conversion allocates, the document's own bytes not counted.
Allocations CostOf(const std::string& rtf) {
  const std::size_t held = allocations.held;
  allocations.all = 0;
  allocations.most_held = held;
  const Document document = ReadRtf(rtf, FakeCodePages());
  EXPECT_TRUE(WriteHtml(document, {11906, 16838, 1440, 1440, 1440, 1440}).ends_with("</html>\n"));
  return {allocations.all, 0, allocations.most_held - held};
}

TEST(RtfBounds, CostsGrowWithTheDocument) {
  constexpr std::size_t kCount = 2000;
  const struct {
    const char* what;
    std::string once;
  } cases[] = {
      {"text", "no end of a line "},
      {"paragraphs", "{\\b x}y\\par "},
      {"tokens", "[First Name]{\\i [}x"},
      {"groups", "{\\b{\\i x"},
      {"ends of groups", "}{"},
      {"cells", "\\trowd\\cellx1000\\intbl a\\cell\\row "},
      {"rows without end", "\\intbl a\\cell "},
      {"nested tables", "\\itap7 a\\nestcell{\\*\\nesttableprops\\trowd\\cellx9\\nestrow}"},
      {"fields", "{\\field{\\*\\fldinst HYPERLINK \"a[Number]\"}{\\fldrslt b}"},
      {"notes", "{\\footnote n}"},
      {"boxes", "{\\shptxt b"},
      {"tabs", "\\pard\\tqr\\tldot\\tx5000 a\\tab b\\par "},
      {"lines with tabs", "\\tqr\\tx5000 a\\tab b\\line "},
      {"lists", "{\\*\\listtable{\\list{\\listlevel{\\leveltext\\'01.;}}\\listid1}}"},
      {"fonts", "{\\fonttbl{\\f1 A;}}\\f1 x"},
      {"pictures", "{\\pict\\pngblip 89504e470d0a1a0a}"},
      {"shapes", "{\\shp{\\*\\shpinst\\shpright9{\\sp{\\sn pib}{\\sv{\\pict 01}}"},
      {"cropped pictures", "{\\pict\\pngblip\\piccropl9 89504e470d0a1a0a}"},
      {"unknown", "{\\*\\unknown x{\\y"},
  };
  for (const auto& each : cases) {
    const std::size_t one = CostOf("{\\rtf1 " + Repeated(each.once, kCount)).all;
    const std::size_t two = CostOf("{\\rtf1 " + Repeated(each.once, 2 * kCount)).all;
    EXPECT_LT(two, one * 5 / 2) << each.what;
    EXPECT_LT(two, 2 * kCount * 6000) << each.what;
  }
}

TEST(HtmlBounds, CostsGrowWithTheDocument) {
  constexpr std::size_t kCount = 2000;
  for (const char* once :
       {"no end of a line ", "<p>[First Name]", "<table><tr><td>", "<tr><td>x<td>y", "<ul><li>x",
        "<a href=\"b\">", "<pre>x\n", "<br>", "<h1>[x", "</div></p>", "<b><i>", "&amp;&#65;",
        "<blockquote>x", "<div style=\"margin:0;x", "<!--", "<img alt=\"x\">"}) {
    const auto cost = [&](std::size_t count) {
      const std::wstring html = FromUtf8(Repeated(once, count));
      allocations.all = 0;
      PlainTextOfHtml(html);
      return allocations.all;
    };
    const std::size_t one = cost(kCount);
    EXPECT_LT(cost(2 * kCount), one * 5 / 2) << once;
    EXPECT_LT(one, kCount * 6000) << once;
  }
}

// The room for the text, which nothing is written to, is in proportion to the document.
TEST(RtfBounds, APictureThatIsTooLargeIsNotHeld) {
  constexpr std::size_t kSize = std::size_t{64} << 20;
  constexpr std::size_t kKeptAtMost = std::size_t{56} << 20;
  for (const std::string& start :
       {std::string("{\\rtf1 x{\\pict\\jpegblip "),
        "{\\rtf1 x{\\pict\\jpegblip\\bin" + std::to_string(kSize) + " "}) {
    std::string rtf = start;
    rtf.resize(start.size() + kSize, 'f');
    rtf += "}y}";
    EXPECT_LT(CostOf(rtf).most_held, rtf.size() * sizeof(wchar_t) + kKeptAtMost) << start;
  }
}

}  // namespace
}  // namespace pxscheduler
