#include "letters/rtf/symbol_fonts.h"

#include <array>
#include <utility>

namespace pxscheduler {
namespace {

// The Symbol font's bytes 0x20 to 0x7E and 0xA0 to 0xFE (Unicode Consortium, VENDORS/ADOBE/
// symbol.txt). A blank stands where there is no character.
constexpr std::u16string_view kSymbolLow =
    u" !\u2200#\u2203%&\u220B()\u2217+,\u2212./0123456789:;<=>?"
    u"\u2245\u0391\u0392\u03A7\u0394\u0395\u03A6\u0393\u0397\u0399\u03D1\u039A\u039B\u039C\u039D"
    u"\u039F\u03A0\u0398\u03A1\u03A3\u03A4\u03A5\u03C2\u03A9\u039E\u03A8\u0396[\u2234]\u22A5_"
    u"\u203E\u03B1\u03B2\u03C7\u03B4\u03B5\u03C6\u03B3\u03B7\u03B9\u03D5\u03BA\u03BB\u03BC\u03BD"
    u"\u03BF\u03C0\u03B8\u03C1\u03C3\u03C4\u03C5\u03D6\u03C9\u03BE\u03C8\u03B6{|}\u223C";
constexpr std::u16string_view kSymbolHigh =
    u"\u20AC\u03D2\u2032\u2264\u2044\u221E\u0192\u2663\u2666\u2665\u2660\u2194\u2190\u2191\u2192"
    u"\u2193\u00B0\u00B1\u2033\u2265\u00D7\u221D\u2202\u2022\u00F7\u2260\u2261\u2248\u2026\u23D0"
    u"\u23AF\u21B5\u2135\u2111\u211C\u2118\u2297\u2295\u2205\u2229\u222A\u2283\u2287\u2284\u2282"
    u"\u2286\u2208\u2209\u2220\u2207\u00AE\u00A9\u2122\u220F\u221A\u22C5\u00AC\u2227\u2228\u21D4"
    u"\u21D0\u21D1\u21D2\u21D3\u25CA\u2329\u00AE\u00A9\u2122\u2211\u239B\u239C\u239D\u23A1\u23A2"
    u"\u23A3\u23A7\u23A8\u23A9\u23AA \u232A\u222B\u2320\u23AE\u2321\u239E\u239F\u23A0\u23A4\u23A5"
    u"\u23A6\u23AB\u23AC\u23AD";
static_assert(kSymbolLow.size() == 0x7F - 0x20 && kSymbolHigh.size() == 0xFF - 0xA0);

// The symbols of Wingdings that letters use.
constexpr std::array<std::pair<unsigned char, char16_t>, 34> kWingdings = {{
    {0x22, u'\u2702'}, {0x28, u'\u260E'}, {0x29, u'\u2706'}, {0x2A, u'\u2709'}, {0x36, u'\u231B'},
    {0x3F, u'\u270D'}, {0x46, u'\u261E'}, {0x4A, u'\u263A'}, {0x4C, u'\u2639'}, {0x51, u'\u2708'},
    {0x52, u'\u263C'}, {0x54, u'\u2744'}, {0x6C, u'\u25CF'}, {0x6E, u'\u25A0'}, {0x6F, u'\u25A1'},
    {0x71, u'\u2751'}, {0x75, u'\u25C6'}, {0x76, u'\u2756'}, {0x9F, u'\u2022'}, {0xA1, u'\u25CB'},
    {0xA7, u'\u25AA'}, {0xA8, u'\u25FB'}, {0xAB, u'\u2605'}, {0xD8, u'\u27A2'}, {0xDF, u'\u2190'},
    {0xE0, u'\u2192'}, {0xE8, u'\u2794'}, {0xEF, u'\u21E6'}, {0xF0, u'\u21E8'}, {0xFB, u'\u2718'},
    {0xFC, u'\u2714'}, {0xFD, u'\u2612'}, {0xFE, u'\u2611'}, {0x20, u' '},
}};

std::wstring Single(char16_t character) {
  std::wstring text(1, static_cast<wchar_t>(character));
  return text;
}

}  // namespace

SymbolSet SymbolSetOf(std::wstring_view font_name, bool symbol_charset) {
  if (font_name.starts_with(L"Wingdings")) return SymbolSet::kWingdings;
  if (font_name == L"Symbol") return SymbolSet::kSymbol;
  return symbol_charset ? SymbolSet::kWingdings : SymbolSet::kNone;
}

std::wstring SymbolText(SymbolSet symbols, unsigned char byte) {
  if (byte < 0x20) return Single(byte);
  if (symbols == SymbolSet::kSymbol) {
    if (byte < 0x7F) return Single(kSymbolLow[byte - 0x20U]);
    if (byte >= 0xA0 && byte < 0xFF) return Single(kSymbolHigh[byte - 0xA0U]);
    return {};
  }
  for (const auto& [code, character] : kWingdings)
    if (code == byte) return Single(character);
  return L"\u2022";
}

}  // namespace pxscheduler
