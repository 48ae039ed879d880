#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "letters/rtf/document.h"

namespace pxscheduler {

// Declarations of a "style" attribute, as they are added.
class Css {
 public:
  void Add(std::string_view name, std::string_view value);
  bool Empty() const { return text_.empty(); }
  // ` style="..."`, or "" without declarations.
  std::string Attribute() const;

 private:
  std::string text_;
};

// Twips as CSS: "10.5pt", "0".
std::string Points(std::int64_t twips);
// Twips in whole pixels of 1/96 inch.
std::string Pixels(std::int64_t twips);
std::string ColourName(Colour colour);
// The family with a generic one to fall back to; "" for a font without a name.
std::string FontFamilies(const Font& font);
// "1pt solid #000000"; "none" without a border.
std::string BorderValue(const Border& border);
// The four values of a margin or a padding, shortened where sides are equal.
std::string FourSides(std::int64_t top, std::int64_t right, std::int64_t bottom, std::int64_t left);
// Adds a margin. Negative sides come after it, by themselves: mail programs that refuse them keep
// the others.
void AddMargin(std::int64_t top, std::int64_t right, std::int64_t bottom, std::int64_t left,
               Css& css);
// Adds what differs from no border at all.
void AddBorders(const Borders& borders, Css& css);
// Adds the font, size, colour, weight and slant in which `format` differs from `around`.
void AddFont(const Document& document, const CharacterFormat& format, const CharacterFormat& around,
             Css& css);
// Adds background, underline, strike-through and capitals.
void AddDecoration(const CharacterFormat& format, Css& css);

}  // namespace pxscheduler
