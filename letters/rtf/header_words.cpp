#include <algorithm>
#include <cstdint>
#include <string_view>

#include "letters/rtf/reading.h"

namespace pxscheduler {
namespace {

template <FontFamily kFamily>
void SetFamily(Reading& reading, const Word&) {
  reading.font.family = kFamily;
}

void SetColourPart(Reading& reading, const Word& word, int shift) {
  if (reading.state.destination != Destination::kColourTable) return;
  const auto part = static_cast<std::uint32_t>(std::clamp(word.Or(0), 0, 255));
  reading.colour.rgb = (reading.colour.rgb & ~(0xFFU << shift)) | part << shift;
  reading.colour.given = true;
}

template <std::int32_t PageLayout::*kValue>
void SetPage(Reading& reading, const Word& word) {
  if (word.Or(0) > 0) reading.document.page.*kValue = word.Or(0);
}

// A section's own value counts where the document has none.
template <std::int32_t PageLayout::*kValue>
void SetSectionPage(Reading& reading, const Word& word) {
  if (reading.document.page.*kValue == 0) SetPage<kValue>(reading, word);
}

}  // namespace

void AddHeaderWords(WordTable& words) {
  const auto add = [&](std::string_view name, void (*apply)(Reading&, const Word&)) {
    words[name] = {apply, false};
  };
  add("ansicpg", [](Reading& r, const Word& w) {
    if (w.Or(0) > 0) r.SetDocumentCodePage(r.CodePageNumber(w.Or(0)));
  });
  add("mac", [](Reading& r, const Word&) { r.SetDocumentCodePage(r.CodePageNumber(10000)); });
  add("pc", [](Reading& r, const Word&) { r.SetDocumentCodePage(r.CodePageNumber(437)); });
  add("pca", [](Reading& r, const Word&) { r.SetDocumentCodePage(r.CodePageNumber(850)); });
  add("deff", [](Reading& r, const Word& w) { r.default_font = w.Or(0); });
  add("deftab",
      [](Reading& r, const Word& w) { r.document.default_tab = std::clamp(w.Or(720), 1, 31680); });

  add("htmautsp", [](Reading& r, const Word& w) { r.document.spacing_collapses = w.On(); });

  add("fonttbl", [](Reading& r, const Word&) { r.Begin(Destination::kFontTable); });
  add("froman", SetFamily<FontFamily::kSerif>);
  add("fswiss", SetFamily<FontFamily::kSansSerif>);
  add("fmodern", SetFamily<FontFamily::kMonospace>);
  add("fscript", SetFamily<FontFamily::kScript>);
  add("fcharset", [](Reading& r, const Word& w) { r.font.charset = w.Or(0); });
  add("cpg", [](Reading& r, const Word& w) { r.font.code_page = std::max(0, w.Or(0)); });

  add("colortbl", [](Reading& r, const Word&) { r.Begin(Destination::kColourTable); });
  add("red", [](Reading& r, const Word& w) { SetColourPart(r, w, 16); });
  add("green", [](Reading& r, const Word& w) { SetColourPart(r, w, 8); });
  add("blue", [](Reading& r, const Word& w) { SetColourPart(r, w, 0); });

  add("stylesheet", [](Reading& r, const Word&) { r.Begin(Destination::kStyleSheet); });
  add("s", [](Reading& r, const Word& w) {
    if (r.state.destination == Destination::kStyleSheet) {
      r.style.number = w.Or(0);
      return;
    }
    r.state.paragraph.style = w.Or(0);
    if (const auto found = r.heading_styles.find(w.Or(0)); found != r.heading_styles.end())
      r.state.paragraph.heading = found->second;
  });

  add("paperw", SetPage<&PageLayout::width>);
  add("paperh", SetPage<&PageLayout::height>);
  add("margl", SetPage<&PageLayout::left_margin>);
  add("margt", SetPage<&PageLayout::top_margin>);
  add("margr", SetPage<&PageLayout::right_margin>);
  add("margb", SetPage<&PageLayout::bottom_margin>);
  add("pgwsxn", SetSectionPage<&PageLayout::width>);
  add("pghsxn", SetSectionPage<&PageLayout::height>);
  add("marglsxn", SetSectionPage<&PageLayout::left_margin>);
  add("margtsxn", SetSectionPage<&PageLayout::top_margin>);
  add("margrsxn", SetSectionPage<&PageLayout::right_margin>);
  add("margbsxn", SetSectionPage<&PageLayout::bottom_margin>);
  for (const char* turned : {"landscape", "lndscpsxn"})
    add(turned, [](Reading& r, const Word& w) { r.landscape = w.On(); });
}

}  // namespace pxscheduler
