#include "letters/html/html_writer.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <utility>

#include "letters/html/block_writer.h"
#include "letters/html/css.h"
#include "letters/html/html_page.h"

namespace pxscheduler {
namespace {

// The font and size of most of the document.
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

}  // namespace

std::string WriteHtml(const Document& document, const PageLayout& page) {
  const CharacterFormat around = PrevailingFont(document);
  const std::string families = FontFamilies(document.fonts[around.font]);
  const std::string body_style = (families.empty() ? "" : "font-family:" + families + ";") +
                                 "font-size:" + Points(std::int64_t{around.half_points} * 10);
  BlockWriter writer(document, around);
  writer.Html().reserve(document.text.size() * 2);
  writer.Html() += HtmlStart(page, body_style);
  writer.Write(document.body);
  if (!document.notes.empty()) {
    writer.Html() += "<hr size=\"1\" width=\"33%\" align=\"left\">\n";
    writer.Write(document.notes);
  }
  return std::move(writer.Html()) + HtmlEnd();
}

}  // namespace pxscheduler
