#include <algorithm>

#include "letters/rtf/reading.h"

namespace pxscheduler {
namespace {

void SetUnderline(Reading& reading, const Word& word) {
  reading.state.character.underline = word.On();
}

void SetBackground(Reading& reading, const Word& word) {
  reading.state.character.background = reading.ColourNumber(word.Or(0));
}

void SetPosition(Reading& reading, TextPosition position, bool on) {
  reading.state.character.position = on ? position : TextPosition::kBaseline;
}

// Characters that have a word of their own.
template <char16_t... kCharacters>
void Append(Reading& reading, const Word&) {
  static constexpr wchar_t kText[] = {static_cast<wchar_t>(kCharacters)..., L'\0'};
  reading.AppendText(kText);
}

}  // namespace

void AddCharacterWords(WordTable& words) {
  const auto add = [&](std::string_view name, void (*apply)(Reading&, const Word&)) {
    words[name] = {apply, false};
  };
  add("plain", [](Reading& r, const Word&) { r.ResetCharacter(); });
  add("f", [](Reading& r, const Word& w) {
    if (r.state.destination == Destination::kFontTable)
      r.font.number = w.Or(0);
    else
      r.SetFont(w.Or(0));
  });
  add("fs", [](Reading& r, const Word& w) {
    r.state.character.half_points = static_cast<std::uint16_t>(std::clamp(w.Or(24), 1, 3276));
  });
  add("b", [](Reading& r, const Word& w) { r.state.character.bold = w.On(); });
  add("i", [](Reading& r, const Word& w) { r.state.character.italic = w.On(); });
  add("strike", [](Reading& r, const Word& w) { r.state.character.strike = w.On(); });
  add("striked", [](Reading& r, const Word& w) { r.state.character.strike = w.On(); });
  add("scaps", [](Reading& r, const Word& w) { r.state.character.small_capitals = w.On(); });
  add("caps", [](Reading& r, const Word& w) { r.state.character.capitals = w.On(); });
  add("v", [](Reading& r, const Word& w) { r.state.character.hidden = w.On(); });
  add("deleted", [](Reading& r, const Word& w) { r.state.character.hidden = w.On(); });
  for (const char* underline :
       {"ul", "uld", "uldash", "uldashd", "uldashdd", "uldb", "ulhwave", "ulldash", "ulth", "ulthd",
        "ulthdash", "ulthdashd", "ulthdashdd", "ulthldash", "ululdbwave", "ulw", "ulwave"})
    add(underline, SetUnderline);
  add("ulnone", [](Reading& r, const Word&) { r.state.character.underline = false; });
  add("super",
      [](Reading& r, const Word& w) { SetPosition(r, TextPosition::kSuperscript, w.On()); });
  add("sub", [](Reading& r, const Word& w) { SetPosition(r, TextPosition::kSubscript, w.On()); });
  add("nosupersub", [](Reading& r, const Word&) { SetPosition(r, TextPosition::kBaseline, true); });
  add("up",
      [](Reading& r, const Word& w) { SetPosition(r, TextPosition::kSuperscript, w.Or(6) > 0); });
  add("dn",
      [](Reading& r, const Word& w) { SetPosition(r, TextPosition::kSubscript, w.Or(6) > 0); });
  add("cf", [](Reading& r, const Word& w) { r.state.character.colour = r.ColourNumber(w.Or(0)); });
  add("cb", SetBackground);
  add("chcbpat", SetBackground);
  add("highlight", SetBackground);

  add("tab", Append<u'\t'>);
  add("line", Append<u'\n'>);
  add("lbr", Append<u'\n'>);
  add("emdash", Append<u'\u2014'>);
  add("endash", Append<u'\u2013'>);
  add("emspace", Append<u'\u2003'>);
  add("enspace", Append<u'\u2002'>);
  add("qmspace", Append<u'\u2005'>);
  add("bullet", Append<u'\u2022'>);
  add("lquote", Append<u'\u2018'>);
  add("rquote", Append<u'\u2019'>);
  add("ldblquote", Append<u'\u201C'>);
  add("rdblquote", Append<u'\u201D'>);
  add("zwj", Append<u'\u200D'>);
  add("zwnj", Append<u'\u200C'>);
  add("zwbo", Append<u'\u200B'>);
  add("ltrmark", Append<u'\u200E'>);
  add("rtlmark", Append<u'\u200F'>);
  add("u", [](Reading& r, const Word& w) { r.AppendUnicode(w.Or(0)); });
  add("uc",
      [](Reading& r, const Word& w) { r.state.unicode_fallback = std::clamp(w.Or(1), 0, 100); });
}

}  // namespace pxscheduler
