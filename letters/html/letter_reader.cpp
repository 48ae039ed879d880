#include "letters/letter_reader.h"

#include <utility>

#include "letters/html/body_file.h"
#include "letters/html/embedded_pictures.h"
#include "letters/html/plain_text.h"
#include "platform/runtime_error.h"
#include "text/text.h"

namespace pxscheduler {

std::optional<Letter> ReadLetter(System& system, const CodePages& code_pages,
                                 const ConvertedFiles& converted, const std::wstring& path) {
  std::string bytes;
  try {
    bytes = system.ReadFile(path);
  } catch (const RuntimeError&) {
    return std::nullopt;
  }
  Letter letter{.body = DecodeBodyFile(bytes, code_pages), .plain_text = {}, .pictures = {}};
  if (IsHtmlDocument(letter.body)) {
    letter.pictures = EmbedPictures(letter.body, converted.DocumentOf(path), system);
    letter.plain_text = PlainTextOfHtml(letter.body);
  } else {
    letter.plain_text = letter.body;
  }
  return letter;
}

}  // namespace pxscheduler
