#include <algorithm>
#include <cstdint>
#include <string_view>
#include <utility>

#include "letters/rtf/control_words.h"
#include "letters/rtf/rtf_parser.h"

namespace pxscheduler {
namespace {

template <std::int32_t ParagraphFormat::*kLength>
void SetLength(RtfParser& parser, const Parameter& parameter) {
  parser.state.paragraph.*kLength = parameter.Length();
}

template <Alignment kAlignment>
void Align(RtfParser& parser, const Parameter&) {
  parser.state.paragraph.alignment = kAlignment;
}

void AddTabStop(RtfParser& parser, const Parameter& parameter) {
  TabStops& tabs = parser.state.paragraph.tabs;
  TabStop stop = std::exchange(parser.tab_stop, {});
  stop.position = parameter.Number();
  if (stop.position <= 0 || stop.position != parameter.Length() || tabs.count == tabs.stops.size())
    return;
  tabs.stops.at(tabs.count++) = stop;
  std::sort(tabs.stops.begin(), tabs.stops.begin() + tabs.count);
}

template <TabKind kKind>
void SetTabKind(RtfParser& parser, const Parameter&) {
  parser.tab_stop.kind = kKind;
}

template <TabLeader kLeader>
void SetTabLeader(RtfParser& parser, const Parameter&) {
  parser.tab_stop.leader = kLeader;
}

void SetLineHeight(RtfParser& parser, const Parameter& parameter) {
  ParagraphFormat& format = parser.state.paragraph;
  const std::int32_t height = parameter.Length();
  const bool multiple = format.line_spacing == LineSpacing::kMultiple;
  format.line_height = height < 0 ? -height : height;
  format.line_spacing = height == 0  ? LineSpacing::kNormal
                        : height < 0 ? LineSpacing::kExact
                        : multiple   ? LineSpacing::kMultiple
                                     : LineSpacing::kAtLeast;
}

void SetMultipleLineHeight(RtfParser& parser, const Parameter& parameter) {
  ParagraphFormat& format = parser.state.paragraph;
  if (parameter.Number() == 1) format.line_spacing = LineSpacing::kMultiple;
}

}  // namespace

void AddParagraphWords(ControlWords& words) {
  words.Add("par", [](RtfParser& p, const Parameter&) { p.EndParagraph(); });
  words.Add("page", [](RtfParser& p, const Parameter&) { p.BreakPage(); });
  words.Add("column", [](RtfParser& p, const Parameter&) { p.BreakColumn(); });
  words.Add("sbknone", [](RtfParser& p, const Parameter&) { p.SetSectionContinues(true); });
  words.Add({"sbkpage", "sbkodd", "sbkeven", "sbkcol", "sectd"},
            [](RtfParser& p, const Parameter&) { p.SetSectionContinues(false); });
  words.Add("sect", [](RtfParser& p, const Parameter&) { p.BreakSection(); });
  words.Add("pard", [](RtfParser& p, const Parameter&) { p.ResetParagraph(); });
  words.Add("ql", Align<Alignment::kLeft>);
  words.Add("qc", Align<Alignment::kCentre>);
  words.Add("qr", Align<Alignment::kRight>);
  words.Add("qj", Align<Alignment::kJustified>);
  words.Add({"li", "lin"}, SetLength<&ParagraphFormat::left_indent>);
  words.Add({"ri", "rin"}, SetLength<&ParagraphFormat::right_indent>);
  words.Add("fi", SetLength<&ParagraphFormat::first_indent>);
  words.Add("sb", SetLength<&ParagraphFormat::space_before>);
  words.Add("sa", SetLength<&ParagraphFormat::space_after>);
  words.Add("contextualspace", [](RtfParser& p, const Parameter& n) {
    p.state.paragraph.spaced_from_other_styles_only = n.On();
  });
  words.Add("sl", SetLineHeight);
  words.Add("slmult", SetMultipleLineHeight);
  words.Add("tx", AddTabStop);
  words.Add("tb", [](RtfParser& p, const Parameter&) {
    p.tab_stop = {};
  });  // a line down the page, no stop
  words.Add("tqc", SetTabKind<TabKind::kCentre>);
  words.Add("tqr", SetTabKind<TabKind::kRight>);
  words.Add("tqdec", SetTabKind<TabKind::kDecimal>);
  words.Add({"tldot", "tlmdot"}, SetTabLeader<TabLeader::kDots>);
  words.Add("tlhyph", SetTabLeader<TabLeader::kHyphens>);
  words.Add("tlul", SetTabLeader<TabLeader::kLine>);
  words.Add("tlth", SetTabLeader<TabLeader::kThickLine>);
  words.Add("tleq", SetTabLeader<TabLeader::kDoubleLine>);
  words.Add("rtlpar",
            [](RtfParser& p, const Parameter&) { p.state.paragraph.right_to_left = true; });
  words.Add("ltrpar",
            [](RtfParser& p, const Parameter&) { p.state.paragraph.right_to_left = false; });
  words.Add("pagebb",
            [](RtfParser& p, const Parameter& n) { p.state.paragraph.page_break_before = n.On(); });
  words.Add("outlinelevel", [](RtfParser& p, const Parameter& n) {
    const std::int32_t level = n.Or(9);
    p.state.paragraph.heading =
        level >= 0 && level < 6 ? static_cast<std::uint8_t>(level + 1) : std::uint8_t{0};
  });
  words.Add("cbpat", [](RtfParser& p, const Parameter& n) {
    p.state.paragraph.shading = p.ColourNumber(n.Number());
  });
  words.Add("shading", [](RtfParser& p, const Parameter& n) {
    if (p.state.paragraph.shading == kAutomatic && n.Number() > 0)
      p.state.paragraph.shading = Grey(n.Number());
  });
}

}  // namespace pxscheduler
