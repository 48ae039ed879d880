#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "letters/html/plain_text.h"
#include "text/utf8.h"

// Any text is a document, and its rendering is whole lines.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const std::wstring text = pxscheduler::PlainTextOfHtml(pxscheduler::FromUtf8(bytes));
  if (!text.empty() && text.back() != L'\n') __builtin_trap();
  return 0;
}
