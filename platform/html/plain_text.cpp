#include "platform/html/plain_text.h"

#include "platform/html/html_parser.h"
#include "platform/html/text_renderer.h"

namespace pxscheduler {

std::wstring PlainTextOfHtml(std::wstring_view html) {
  TextRenderer renderer;
  ParseHtml(html, renderer);
  return renderer.Result();
}

}  // namespace pxscheduler
