#include <algorithm>
#include <cstdint>
#include <string_view>
#include <utility>

#include "letters/rtf/reading.h"

namespace pxscheduler {
namespace {

constexpr std::int32_t kLongestIndent = 31680;  // twips, 22 inches

std::int32_t Indent(const Word& word) {
  return std::clamp(word.Or(0), -kLongestIndent, kLongestIndent);
}

template <Alignment kAlignment>
void Align(Reading& reading, const Word&) {
  reading.state.paragraph.alignment = kAlignment;
}

void AddTabStop(Reading& reading, const Word& word) {
  TabStops& tabs = reading.state.paragraph.tabs;
  TabStop stop = std::exchange(reading.tab_stop, {});
  stop.position = word.Or(0);
  if (stop.position <= 0 || stop.position > kLongestIndent || tabs.count == tabs.stops.size())
    return;
  tabs.stops.at(tabs.count++) = stop;
  std::sort(tabs.stops.begin(), tabs.stops.begin() + tabs.count);
}

template <TabKind kKind>
void SetTabKind(Reading& reading, const Word&) {
  reading.tab_stop.kind = kKind;
}

template <TabLeader kLeader>
void SetTabLeader(Reading& reading, const Word&) {
  reading.tab_stop.leader = kLeader;
}

void SetLineHeight(Reading& reading, const Word& word) {
  ParagraphFormat& format = reading.state.paragraph;
  const std::int32_t height = Indent(word);
  const bool multiple = format.line_spacing == LineSpacing::kMultiple;
  format.line_height = height < 0 ? -height : height;
  format.line_spacing = height == 0  ? LineSpacing::kNormal
                        : height < 0 ? LineSpacing::kExact
                        : multiple   ? LineSpacing::kMultiple
                                     : LineSpacing::kAtLeast;
}

void SetMultipleLineHeight(Reading& reading, const Word& word) {
  ParagraphFormat& format = reading.state.paragraph;
  if (word.Or(0) == 1) format.line_spacing = LineSpacing::kMultiple;
}

// A percentage of black over white.
Colour Grey(std::int32_t hundredths_of_percent) {
  const auto level =
      static_cast<std::uint32_t>(255 - std::clamp(hundredths_of_percent, 0, 10000) * 255 / 10000);
  return level << 16 | level << 8 | level;
}

void AimBorders(Reading& reading, std::uint8_t sides) {
  reading.border_target = {BorderTarget::Owner::kParagraph, sides};
}

template <typename Change>
void ChangeBorders(Reading& reading, Change change) {
  for (const Side side : {kTop, kRight, kBottom, kLeft}) {
    if ((reading.border_target.sides >> side & 1) == 0) continue;
    if (Border* border = reading.BorderOf(side)) change(*border);
  }
}

template <BorderStyle kStyle>
void SetBorderStyle(Reading& reading, const Word&) {
  ChangeBorders(reading, [](Border& border) {
    border.style = kStyle;
    if (border.width == 0) border.width = 15;
  });
}

std::uint16_t BorderWidth(const Word& word) {
  return static_cast<std::uint16_t>(std::clamp(word.Or(15), 0, 255));
}

}  // namespace

void AddParagraphWords(WordTable& words) {
  const auto add = [&](std::string_view name, void (*apply)(Reading&, const Word&)) {
    words[name] = {apply, false};
  };
  add("par", [](Reading& r, const Word&) { r.EndParagraph(); });
  add("page", [](Reading& r, const Word&) { r.BreakPage(); });
  add("column", [](Reading& r, const Word&) { r.BreakColumn(); });
  add("sbknone", [](Reading& r, const Word&) { r.SetSectionContinues(true); });
  for (const char* section_break : {"sbkpage", "sbkodd", "sbkeven", "sbkcol", "sectd"})
    add(section_break, [](Reading& r, const Word&) { r.SetSectionContinues(false); });
  add("sect", [](Reading& r, const Word&) { r.BreakSection(); });
  add("pard", [](Reading& r, const Word&) { r.ResetParagraph(); });
  add("ql", Align<Alignment::kLeft>);
  add("qc", Align<Alignment::kCentre>);
  add("qr", Align<Alignment::kRight>);
  add("qj", Align<Alignment::kJustified>);
  add("li", [](Reading& r, const Word& w) { r.state.paragraph.left_indent = Indent(w); });
  add("lin", [](Reading& r, const Word& w) { r.state.paragraph.left_indent = Indent(w); });
  add("ri", [](Reading& r, const Word& w) { r.state.paragraph.right_indent = Indent(w); });
  add("rin", [](Reading& r, const Word& w) { r.state.paragraph.right_indent = Indent(w); });
  add("fi", [](Reading& r, const Word& w) { r.state.paragraph.first_indent = Indent(w); });
  add("sb", [](Reading& r, const Word& w) { r.state.paragraph.space_before = Indent(w); });
  add("sa", [](Reading& r, const Word& w) { r.state.paragraph.space_after = Indent(w); });
  add("contextualspace",
      [](Reading& r, const Word& w) { r.state.paragraph.spaced_from_other_styles_only = w.On(); });
  add("sl", SetLineHeight);
  add("slmult", SetMultipleLineHeight);
  add("tx", AddTabStop);
  add("tb", [](Reading& r, const Word&) { r.tab_stop = {}; });  // a line down the page, no stop
  add("tqc", SetTabKind<TabKind::kCentre>);
  add("tqr", SetTabKind<TabKind::kRight>);
  add("tqdec", SetTabKind<TabKind::kDecimal>);
  add("tldot", SetTabLeader<TabLeader::kDots>);
  add("tlmdot", SetTabLeader<TabLeader::kDots>);
  add("tlhyph", SetTabLeader<TabLeader::kHyphens>);
  add("tlul", SetTabLeader<TabLeader::kLine>);
  add("tlth", SetTabLeader<TabLeader::kThickLine>);
  add("tleq", SetTabLeader<TabLeader::kDoubleLine>);
  add("rtlpar", [](Reading& r, const Word&) { r.state.paragraph.right_to_left = true; });
  add("ltrpar", [](Reading& r, const Word&) { r.state.paragraph.right_to_left = false; });
  add("pagebb", [](Reading& r, const Word& w) { r.state.paragraph.page_break_before = w.On(); });
  add("outlinelevel", [](Reading& r, const Word& w) {
    const std::int32_t level = w.Or(9);
    r.state.paragraph.heading =
        level >= 0 && level < 6 ? static_cast<std::uint8_t>(level + 1) : std::uint8_t{0};
  });
  add("cbpat",
      [](Reading& r, const Word& w) { r.state.paragraph.shading = r.ColourNumber(w.Or(0)); });
  add("shading", [](Reading& r, const Word& w) {
    if (r.state.paragraph.shading == kAutomatic && w.Or(0) > 0)
      r.state.paragraph.shading = Grey(w.Or(0));
  });

  add("brdrt", [](Reading& r, const Word&) { AimBorders(r, 1 << kTop); });
  add("brdrr", [](Reading& r, const Word&) { AimBorders(r, 1 << kRight); });
  add("brdrb", [](Reading& r, const Word&) { AimBorders(r, 1 << kBottom); });
  add("brdrl", [](Reading& r, const Word&) { AimBorders(r, 1 << kLeft); });
  add("box", [](Reading& r, const Word&) { AimBorders(r, 15); });
  for (const char* elsewhere : {"brdrbtw", "brdrbar", "chbrdr"})
    add(elsewhere, [](Reading& r, const Word&) { r.border_target = {}; });
  for (const char* none : {"brdrnone", "brdrnil", "brdrtbl"})
    add(none, [](Reading& r, const Word&) { ChangeBorders(r, [](Border& b) { b = {}; }); });
  for (const char* solid : {"brdrs", "brdrth", "brdrsh", "brdrhair", "brdrinset", "brdroutset",
                            "brdremboss", "brdrengrave", "brdrwavy"})
    add(solid, SetBorderStyle<BorderStyle::kSolid>);
  for (const char* doubled : {"brdrdb", "brdrtriple", "brdrtnthsg", "brdrthtnsg", "brdrtnthmg",
                              "brdrthtnmg", "brdrtnthlg", "brdrthtnlg", "brdrwavydb"})
    add(doubled, SetBorderStyle<BorderStyle::kDouble>);
  add("brdrdot", SetBorderStyle<BorderStyle::kDotted>);
  for (const char* dashed : {"brdrdash", "brdrdashsm", "brdrdashd", "brdrdashdd", "brdrdashdotstr"})
    add(dashed, SetBorderStyle<BorderStyle::kDashed>);
  add("brdrw", [](Reading& r, const Word& w) {
    ChangeBorders(r, [&](Border& b) { b.width = BorderWidth(w); });
  });
  add("brsp", [](Reading& r, const Word& w) {
    ChangeBorders(
        r, [&](Border& b) { b.space = static_cast<std::uint16_t>(std::clamp(w.Or(0), 0, 1440)); });
  });
  add("brdrcf", [](Reading& r, const Word& w) {
    ChangeBorders(r, [&](Border& b) { b.colour = r.ColourNumber(w.Or(0)); });
  });
}

}  // namespace pxscheduler
