#include <algorithm>
#include <cstdint>
#include <string_view>

#include "letters/rtf/control_words.h"
#include "letters/rtf/rtf_parser.h"

namespace pxscheduler {
namespace {

template <FontFamily kFamily>
void SetFamily(RtfParser& parser, const Parameter&) {
  parser.font.family = kFamily;
}

void SetColourPart(RtfParser& parser, const Parameter& parameter, int shift) {
  if (parser.state.destination != Destination::kColourTable) return;
  const auto part = static_cast<std::uint32_t>(std::clamp(parameter.Number(), 0, 255));
  parser.colour.rgb = (parser.colour.rgb & ~(0xFFU << shift)) | part << shift;
  parser.colour.given = true;
}

template <std::int32_t PageLayout::*kValue>
void SetPage(RtfParser& parser, const Parameter& parameter) {
  if (parameter.Number() > 0) parser.document.page.*kValue = parameter.Number();
}

// A section's own value counts where the document has none.
template <std::int32_t PageLayout::*kValue>
void SetSectionPage(RtfParser& parser, const Parameter& parameter) {
  if (parser.document.page.*kValue == 0) SetPage<kValue>(parser, parameter);
}

}  // namespace

void AddHeaderWords(ControlWords& words) {
  words.Add("ansicpg", [](RtfParser& p, const Parameter& n) {
    p.SetDocumentCodePage(p.CodePageNumber(n.Number()));
  });
  words.Add("mac",
            [](RtfParser& p, const Parameter&) { p.SetDocumentCodePage(p.CodePageNumber(10000)); });
  words.Add("pc",
            [](RtfParser& p, const Parameter&) { p.SetDocumentCodePage(p.CodePageNumber(437)); });
  words.Add("pca",
            [](RtfParser& p, const Parameter&) { p.SetDocumentCodePage(p.CodePageNumber(850)); });
  words.Add("deff", [](RtfParser& p, const Parameter& n) { p.default_font = n.Number(); });
  words.Add("deftab", [](RtfParser& p, const Parameter& n) {
    p.document.default_tab = std::clamp(n.Or(720), 1, 31680);
  });

  words.Add("htmautsp",
            [](RtfParser& p, const Parameter& n) { p.document.spacing_collapses = n.On(); });

  words.Add("fonttbl", Begin<Destination::kFontTable>);
  words.Add("froman", SetFamily<FontFamily::kSerif>);
  words.Add("fswiss", SetFamily<FontFamily::kSansSerif>);
  words.Add("fmodern", SetFamily<FontFamily::kMonospace>);
  words.Add("fscript", SetFamily<FontFamily::kScript>);
  words.Add("fcharset", [](RtfParser& p, const Parameter& n) { p.font.charset = n.Number(); });
  words.Add("cpg", [](RtfParser& p, const Parameter& n) { p.font.code_page = n.Number(); });

  words.Add("colortbl", Begin<Destination::kColourTable>);
  words.Add("red", [](RtfParser& p, const Parameter& n) { SetColourPart(p, n, 16); });
  words.Add("green", [](RtfParser& p, const Parameter& n) { SetColourPart(p, n, 8); });
  words.Add("blue", [](RtfParser& p, const Parameter& n) { SetColourPart(p, n, 0); });

  words.Add("stylesheet", Begin<Destination::kStyleSheet>);
  words.Add("s", [](RtfParser& p, const Parameter& n) {
    if (p.state.destination == Destination::kStyleSheet) {
      p.style.number = n.Number();
      return;
    }
    p.state.paragraph.style = n.Number();
    if (const auto found = p.heading_styles.find(n.Number()); found != p.heading_styles.end())
      p.state.paragraph.heading = found->second;
  });

  words.Add("paperw", SetPage<&PageLayout::width>);
  words.Add("paperh", SetPage<&PageLayout::height>);
  words.Add("margl", SetPage<&PageLayout::left_margin>);
  words.Add("margt", SetPage<&PageLayout::top_margin>);
  words.Add("margr", SetPage<&PageLayout::right_margin>);
  words.Add("margb", SetPage<&PageLayout::bottom_margin>);
  words.Add("pgwsxn", SetSectionPage<&PageLayout::width>);
  words.Add("pghsxn", SetSectionPage<&PageLayout::height>);
  words.Add("marglsxn", SetSectionPage<&PageLayout::left_margin>);
  words.Add("margtsxn", SetSectionPage<&PageLayout::top_margin>);
  words.Add("margrsxn", SetSectionPage<&PageLayout::right_margin>);
  words.Add("margbsxn", SetSectionPage<&PageLayout::bottom_margin>);
  words.Add({"landscape", "lndscpsxn"},
            [](RtfParser& p, const Parameter& n) { p.landscape = n.On(); });
}

}  // namespace pxscheduler
