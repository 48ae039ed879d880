#include "letters/html/body_file.h"

#include <array>
#include <memory>

#include "text/ascii_case.h"

namespace pxscheduler {

namespace {

// Where a document has to declare its encoding; browsers look at the first 1,024 bytes, but word
// processors put their own lines before it.
constexpr std::size_t kDeclarationWithin = 4096;
constexpr std::string_view kTagBlanks = " \t\r\n\f";

struct ByteOrderMark {
  std::string_view bytes;
  const char* encoding;
};

// The four-byte marks first: a two-byte mark is the start of one of them.
constexpr std::array<ByteOrderMark, 5> kByteOrderMarks = {{{{"\xFF\xFE\0\0", 4}, "UTF-32LE"},
                                                           {{"\0\0\xFE\xFF", 4}, "UTF-32BE"},
                                                           {{"\xEF\xBB\xBF", 3}, "UTF-8"},
                                                           {{"\xFF\xFE", 2}, "UTF-16LE"},
                                                           {{"\xFE\xFF", 2}, "UTF-16BE"}}};

// The value after `name` and "=" in a tag, without quotation marks; "" where there is none.
std::string_view AttributeLikeValue(std::string_view tag, std::string_view name) {
  const std::size_t found = tag.find(name);
  if (found == std::string_view::npos) return {};
  std::size_t start = tag.find_first_not_of(kTagBlanks, found + name.size());
  if (start == std::string_view::npos || tag[start] != '=') return {};
  start = tag.find_first_not_of(" \t\r\n\f\"'", start + 1);
  if (start == std::string_view::npos) return {};
  return tag.substr(start, tag.find_first_of(" \t\r\n\f\"';/>?", start) - start);
}

std::string DeclaredEncoding(std::string_view bytes) {
  const std::string start = LowerAscii(bytes.substr(0, kDeclarationWithin));
  const std::string_view text = start;
  if (text.starts_with("<?xml")) {
    const std::string_view encoding =
        AttributeLikeValue(text.substr(0, text.find("?>")), "encoding");
    if (!encoding.empty()) return std::string(encoding);
  }
  for (std::size_t position = text.find('<'); position != std::string_view::npos;
       position = text.find('<', position + 1)) {
    if (text.substr(position).starts_with("<!--")) {
      position = text.find("-->", position);
      if (position == std::string_view::npos) break;
    } else if (text.substr(position).starts_with("<meta")) {
      const std::string_view tag = text.substr(position, text.find('>', position) - position);
      const std::string_view encoding = AttributeLikeValue(tag, "charset");
      if (!encoding.empty()) return std::string(encoding);
    }
  }
  return {};
}

}  // namespace

std::wstring DecodeBodyFile(std::string_view bytes, const CodePages& code_pages) {
  for (const ByteOrderMark& mark : kByteOrderMarks) {
    if (bytes.starts_with(mark.bytes)) {
      if (const std::unique_ptr<CodePage> encoding = code_pages.Find(mark.encoding))
        return encoding->FromBytes(bytes.substr(mark.bytes.size()));
    }
  }
  std::string declared = DeclaredEncoding(bytes);
  if (declared.starts_with("utf-16") || declared.starts_with("utf-32"))
    declared = "utf-8";  // the declaration could be read, so it is not true
  if (!declared.empty()) {
    if (const std::unique_ptr<CodePage> encoding = code_pages.Find(declared))
      return encoding->FromBytes(bytes);
  }
  return code_pages.Ansi().FromBytes(bytes);
}

}  // namespace pxscheduler
