#include <algorithm>
#include <string>

#include "letters/rtf/control_words.h"
#include "letters/rtf/rtf_parser.h"

namespace pxscheduler {
namespace {

template <bool CharacterFormat::*kFlag>
void SetFlag(RtfParser& parser, const Parameter& parameter) {
  parser.state.character.*kFlag = parameter.On();
}

void SetBackground(RtfParser& parser, const Parameter& parameter) {
  parser.state.character.background = parser.ColourNumber(parameter.Number());
}

template <TextPosition kPosition>
void SetPosition(RtfParser& parser, const Parameter& parameter) {
  parser.state.character.position = parameter.Or(1) > 0 ? kPosition : TextPosition::kBaseline;
}

// A character that has a word of its own.
template <char16_t kCharacter>
void Append(RtfParser& parser, const Parameter&) {
  parser.AppendText(std::wstring(1, static_cast<wchar_t>(kCharacter)));
}

}  // namespace

void AddCharacterWords(ControlWords& words) {
  words.Add("plain", [](RtfParser& p, const Parameter&) { p.ResetCharacter(); });
  words.Add("f", [](RtfParser& p, const Parameter& n) {
    if (p.state.destination == Destination::kFontTable)
      p.font.number = n.Number();
    else
      p.SetFont(n.Number());
  });
  words.Add("fs", [](RtfParser& p, const Parameter& n) {
    p.state.character.half_points = static_cast<std::uint16_t>(std::clamp(n.Or(24), 1, 3276));
  });
  words.Add("b", SetFlag<&CharacterFormat::bold>);
  words.Add("i", SetFlag<&CharacterFormat::italic>);
  words.Add({"strike", "striked"}, SetFlag<&CharacterFormat::strike>);
  words.Add("scaps", SetFlag<&CharacterFormat::small_capitals>);
  words.Add("caps", SetFlag<&CharacterFormat::capitals>);
  words.Add({"v", "deleted"}, SetFlag<&CharacterFormat::hidden>);
  words.Add(
      {"ul", "uld", "uldash", "uldashd", "uldashdd", "uldb", "ulhwave", "ulldash", "ulth", "ulthd",
       "ulthdash", "ulthdashd", "ulthdashdd", "ulthldash", "ululdbwave", "ulw", "ulwave"},
      SetFlag<&CharacterFormat::underline>);
  words.Add("ulnone", [](RtfParser& p, const Parameter&) { p.state.character.underline = false; });
  words.Add({"super", "up"}, SetPosition<TextPosition::kSuperscript>);
  words.Add({"sub", "dn"}, SetPosition<TextPosition::kSubscript>);
  words.Add("nosupersub", SetPosition<TextPosition::kBaseline>);
  words.Add("cf", [](RtfParser& p, const Parameter& n) {
    p.state.character.colour = p.ColourNumber(n.Number());
  });
  words.Add({"cb", "chcbpat", "highlight"}, SetBackground);

  words.Add("tab", Append<u'\t'>);
  words.Add({"line", "lbr"}, Append<u'\n'>);
  words.Add("emdash", Append<u'\u2014'>);
  words.Add("endash", Append<u'\u2013'>);
  words.Add("emspace", Append<u'\u2003'>);
  words.Add("enspace", Append<u'\u2002'>);
  words.Add("qmspace", Append<u'\u2005'>);
  words.Add("bullet", Append<u'\u2022'>);
  words.Add("lquote", Append<u'\u2018'>);
  words.Add("rquote", Append<u'\u2019'>);
  words.Add("ldblquote", Append<u'\u201C'>);
  words.Add("rdblquote", Append<u'\u201D'>);
  words.Add("zwj", Append<u'\u200D'>);
  words.Add("zwnj", Append<u'\u200C'>);
  words.Add("zwbo", Append<u'\u200B'>);
  words.Add("ltrmark", Append<u'\u200E'>);
  words.Add("rtlmark", Append<u'\u200F'>);
  words.Add("u", [](RtfParser& p, const Parameter& n) { p.AppendUnicode(n.Number()); });
  words.Add("uc", [](RtfParser& p, const Parameter& n) {
    p.state.unicode_fallback = std::clamp(n.Or(1), 0, 100);
  });
}

}  // namespace pxscheduler
