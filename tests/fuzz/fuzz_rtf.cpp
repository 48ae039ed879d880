#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "letters/html/html_writer.h"
#include "letters/rtf/rtf_reader.h"
#include "platform/linux/icu_code_page.h"

// Any bytes make a document, and any document makes HTML.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const pxscheduler::IcuCodePages code_pages(L"1252");
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const pxscheduler::Document document = pxscheduler::ReadRtf(bytes, code_pages);
  const std::string html = WriteHtml(document, document.page);
  if (!html.ends_with("</html>\n")) __builtin_trap();
  return 0;
}
