#include "platform/html/message_renderings.h"

#include <string>

#include "platform/html/inline_pictures.h"
#include "platform/html/plain_text.h"

namespace pxscheduler {

HtmlRenderings MessageRenderings(System& system, const ConvertedFiles& converted) {
  return {.plain_text = PlainTextOfHtml,
          .take_inline_parts = [&system, &converted](std::wstring& html, const std::wstring& path) {
            return TakePictures(html, converted.DocumentOf(path), system);
          }};
}

}  // namespace pxscheduler
