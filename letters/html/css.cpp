#include "letters/html/css.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "text/ascii_case.h"
#include "text/hexadecimal.h"
#include "text/utf8.h"

namespace pxscheduler {

void Css::Add(std::string_view name, std::string_view value) {
  if (!text_.empty()) text_ += ';';
  text_.append(name).append(":").append(value);
}

std::string Css::Attribute() const {
  return text_.empty() ? std::string() : " style=\"" + text_ + "\"";
}

std::string Points(std::int64_t twips) {
  if (twips == 0) return "0";
  std::string text = twips < 0 ? "-" : "";
  const std::int64_t hundredths = (twips < 0 ? -twips : twips) * 5;
  text += std::to_string(hundredths / 100);
  if (hundredths % 100 != 0) {
    text += '.';
    text += static_cast<char>('0' + hundredths / 10 % 10);
    if (hundredths % 10 != 0) text += static_cast<char>('0' + hundredths % 10);
  }
  return text + "pt";
}

std::string Pixels(std::int64_t twips) {
  return std::to_string(std::max<std::int64_t>(1, (twips + 7) / 15));
}

std::string ColourName(Colour colour) {
  std::string name = "#";
  for (int shift = 20; shift >= 0; shift -= 4) name += kSmallHexDigits[colour >> shift & 0xF];
  return name;
}

std::string FontFamilies(const Font& font) {
  std::wstring name = font.name;
  std::erase_if(name, [](wchar_t letter) {
    return letter < L' ' ||
           std::wstring_view(L"'\"\\;<>&{}").find(letter) != std::wstring_view::npos;
  });
  if (name.empty()) return {};
  const bool plain = std::ranges::all_of(name, IsAsciiLetter<wchar_t>);
  std::string families = plain ? ToUtf8(name) : "'" + ToUtf8(name) + "'";
  switch (font.family) {
    case FontFamily::kSerif:
      return families + ",serif";
    case FontFamily::kSansSerif:
      return families + ",sans-serif";
    case FontFamily::kMonospace:
      return families + ",monospace";
    case FontFamily::kScript:
      return families + ",cursive";
    case FontFamily::kUnknown:
      break;
  }
  return families;
}

std::string BorderValue(const Border& border) {
  static constexpr std::array<std::string_view, 5> kStyles = {"none", "solid", "double", "dotted",
                                                              "dashed"};
  if (border.style == BorderStyle::kNone) return "none";
  // A double border of less than three pixels shows as a single one.
  const int least = border.style == BorderStyle::kDouble ? 45 : 10;
  const int width = std::max<int>(border.width, least);
  return Points(width) + " " + std::string(kStyles.at(static_cast<std::size_t>(border.style))) +
         " " + ColourName(border.colour == kAutomatic ? 0 : border.colour);
}

std::string FourSides(std::int64_t top, std::int64_t right, std::int64_t bottom,
                      std::int64_t left) {
  std::string text = Points(top);
  if (left != right) return text + " " + Points(right) + " " + Points(bottom) + " " + Points(left);
  if (top != bottom) return text + " " + Points(right) + " " + Points(bottom);
  return top == right ? text : text + " " + Points(right);
}

void AddMargin(std::int64_t top, std::int64_t right, std::int64_t bottom, std::int64_t left,
               Css& css) {
  const auto shown = [](std::int64_t side) { return std::max<std::int64_t>(0, side); };
  css.Add("margin", FourSides(shown(top), shown(right), shown(bottom), shown(left)));
  if (right < 0) css.Add("margin-right", Points(right));
  if (left < 0) css.Add("margin-left", Points(left));
}

void AddBorders(const Borders& borders, Css& css) {
  static constexpr std::array<std::string_view, 4> kNames = {"border-top", "border-right",
                                                             "border-bottom", "border-left"};
  const auto same = [&](const Border& border) {
    return BorderValue(border) == BorderValue(borders.front());
  };
  if (std::ranges::all_of(borders, same)) {
    if (borders.front().style != BorderStyle::kNone)
      css.Add("border", BorderValue(borders.front()));
    return;
  }
  for (std::size_t side = 0; side < borders.size(); ++side)
    if (borders.at(side).style != BorderStyle::kNone)
      css.Add(kNames.at(side), BorderValue(borders.at(side)));
}

void AddFont(const Document& document, const CharacterFormat& format, const CharacterFormat& around,
             Css& css) {
  if (format.font != around.font) {
    const std::string families = FontFamilies(document.fonts[format.font]);
    if (!families.empty()) css.Add("font-family", families);
  }
  if (format.half_points != around.half_points)
    css.Add("font-size", Points(std::int64_t{format.half_points} * 10));
  if (format.colour != around.colour)
    css.Add("color", ColourName(format.colour == kAutomatic ? 0 : format.colour));
  if (format.bold != around.bold) css.Add("font-weight", format.bold ? "bold" : "normal");
  if (format.italic != around.italic) css.Add("font-style", format.italic ? "italic" : "normal");
}

void AddDecoration(const CharacterFormat& format, Css& css) {
  if (format.background != kAutomatic) css.Add("background-color", ColourName(format.background));
  if (format.underline || format.strike)
    css.Add("text-decoration", format.underline && format.strike ? "underline line-through"
                               : format.underline                ? "underline"
                                                                 : "line-through");
  if (format.small_capitals) css.Add("font-variant", "small-caps");
  if (format.capitals) css.Add("text-transform", "uppercase");
}

}  // namespace pxscheduler
