#include "letters/html/plain_text.h"

#include "letters/html/html_parser.h"
#include "letters/html/text_renderer.h"

namespace pxscheduler {

std::wstring PlainTextOfHtml(std::wstring_view html) {
  TextRenderer renderer;
  ParseHtml(html, renderer);
  return renderer.Result();
}

}  // namespace pxscheduler
