#include "letters/html/html_writer.h"

#include <cstdint>
#include <utility>

#include "letters/html/block_writer.h"
#include "letters/html/css.h"
#include "letters/html/html_page.h"
#include "letters/html/prevailing_format.h"

namespace pxscheduler {
std::string WriteHtml(const Document& document, const PageLayout& page) {
  const CharacterFormat around = PrevailingFont(document);
  const std::string families = FontFamilies(document.fonts[around.font]);
  const std::string body_style = (families.empty() ? "" : "font-family:" + families + ";") +
                                 "font-size:" + Points(std::int64_t{around.half_points} * 10);
  BlockWriter writer(document, around);
  writer.Html() += HtmlStart(page, body_style);
  writer.Write(document.body);
  if (!document.notes.empty()) {
    writer.Html() += "<hr size=\"1\" width=\"33%\" align=\"left\">\n";
    writer.Write(document.notes);
  }
  return std::move(writer.Html()) + HtmlEnd();
}

}  // namespace pxscheduler
