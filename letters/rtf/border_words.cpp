// The borders of paragraphs, rows and cells: a word for the side, then words for its look.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "letters/rtf/control_words.h"
#include "letters/rtf/rtf_parser.h"

namespace pxscheduler {
namespace {

constexpr std::uint16_t kUsualWidth = 15;  // twips

template <BorderTarget::Owner kOwner, std::uint8_t kSides>
void AimBorders(RtfParser& parser, const Parameter&) {
  parser.border_target = {kOwner, kSides};
}

template <typename Change>
void ChangeBorders(RtfParser& parser, Change change) {
  Borders& borders = parser.TargetBorders();
  for (std::size_t side = 0; side < borders.size(); ++side)
    if ((parser.border_target.sides >> side & 1) != 0) change(borders[side]);
}

template <BorderStyle kStyle>
void SetBorderStyle(RtfParser& parser, const Parameter&) {
  ChangeBorders(parser, [](Border& border) {
    border.style = kStyle;
    if (border.width == 0) border.width = kUsualWidth;
  });
}

}  // namespace

void AddBorderWords(ControlWords& words) {
  using Owner = BorderTarget::Owner;
  words.Add("brdrt", AimBorders<Owner::kParagraph, 1 << kTop>);
  words.Add("brdrr", AimBorders<Owner::kParagraph, 1 << kRight>);
  words.Add("brdrb", AimBorders<Owner::kParagraph, 1 << kBottom>);
  words.Add("brdrl", AimBorders<Owner::kParagraph, 1 << kLeft>);
  words.Add("box", AimBorders<Owner::kParagraph, 15>);
  words.Add("clbrdrt", AimBorders<Owner::kCell, 1 << kTop>);
  words.Add("clbrdrr", AimBorders<Owner::kCell, 1 << kRight>);
  words.Add("clbrdrb", AimBorders<Owner::kCell, 1 << kBottom>);
  words.Add("clbrdrl", AimBorders<Owner::kCell, 1 << kLeft>);
  words.Add("trbrdrt", AimBorders<Owner::kRow, 1 << kTop>);
  words.Add("trbrdrr", AimBorders<Owner::kRow, 1 << kRight>);
  words.Add("trbrdrb", AimBorders<Owner::kRow, 1 << kBottom>);
  words.Add("trbrdrl", AimBorders<Owner::kRow, 1 << kLeft>);
  // Those that HTML has no place for.
  words.Add({"brdrbtw", "brdrbar", "chbrdr", "trbrdrh", "trbrdrv", "cldglu", "cldgll"},
            AimBorders<Owner::kParagraph, 0>);

  words.Add({"brdrnone", "brdrnil", "brdrtbl"},
            [](RtfParser& p, const Parameter&) { ChangeBorders(p, [](Border& b) { b = {}; }); });
  words.Add({"brdrs", "brdrth", "brdrsh", "brdrhair", "brdrinset", "brdroutset", "brdremboss",
             "brdrengrave", "brdrwavy"},
            SetBorderStyle<BorderStyle::kSolid>);
  words.Add({"brdrdb", "brdrtriple", "brdrtnthsg", "brdrthtnsg", "brdrtnthmg", "brdrthtnmg",
             "brdrtnthlg", "brdrthtnlg", "brdrwavydb"},
            SetBorderStyle<BorderStyle::kDouble>);
  words.Add("brdrdot", SetBorderStyle<BorderStyle::kDotted>);
  words.Add({"brdrdash", "brdrdashsm", "brdrdashd", "brdrdashdd", "brdrdashdotstr"},
            SetBorderStyle<BorderStyle::kDashed>);
  words.Add("brdrw", [](RtfParser& p, const Parameter& n) {
    const int width = std::clamp<int>(n.Or(kUsualWidth), 0, 255);
    ChangeBorders(p, [&](Border& b) { b.width = static_cast<std::uint16_t>(width); });
  });
  words.Add("brsp", [](RtfParser& p, const Parameter& n) {
    ChangeBorders(p, [&](Border& b) {
      b.space = static_cast<std::uint16_t>(std::clamp(n.Number(), 0, 1440));
    });
  });
  words.Add("brdrcf", [](RtfParser& p, const Parameter& n) {
    ChangeBorders(p, [&](Border& b) { b.colour = p.ColourNumber(n.Number()); });
  });
}

}  // namespace pxscheduler
