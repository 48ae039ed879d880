#include "letters/html/prevailing_format.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <utility>

namespace pxscheduler {
namespace {

CharacterFormat FontOnly(const CharacterFormat& format) {
  CharacterFormat font;
  font.font = format.font;
  font.half_points = format.half_points;
  font.colour = format.colour;
  font.bold = format.bold;
  font.italic = format.italic;
  return font;
}

}  // namespace

CharacterFormat PrevailingFont(const Document& document) {
  std::map<std::pair<std::uint16_t, std::uint16_t>, std::uint64_t> lengths;
  for (const Run& run : document.runs) {
    if (run.kind != Run::Kind::kText) continue;
    const CharacterFormat& format = document.character_formats[run.format];
    lengths[{format.font, format.half_points}] += run.length;
  }
  CharacterFormat prevailing;
  if (lengths.empty()) return prevailing;
  const auto& [font, half_points] =
      std::ranges::max_element(lengths, {}, [](const auto& each) { return each.second; })->first;
  prevailing.font = font;
  prevailing.half_points = half_points;
  return prevailing;
}

CharacterFormat PrevailingFormat(const Document& document, const Paragraph& paragraph,
                                 const CharacterFormat& otherwise) {
  std::map<CharacterFormat, std::uint32_t> lengths;
  for (std::uint32_t i = 0; i < paragraph.run_count; ++i) {
    const Run& run = document.runs[paragraph.first_run + i];
    if (run.kind != Run::Kind::kText) continue;
    if (paragraph.run_count == 1) return FontOnly(document.character_formats[run.format]);
    lengths[FontOnly(document.character_formats[run.format])] += run.length;
  }
  if (lengths.empty()) return FontOnly(otherwise);
  return std::ranges::max_element(lengths, {}, [](const auto& each) { return each.second; })->first;
}

}  // namespace pxscheduler
