#include "platform/linux/export_lines.h"

#include <utility>

#include "platform/linux/native_text.h"
#include "platform/runtime_error.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

constexpr std::string_view kUtf16Mark = "\xFF\xFE";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

}  // namespace

ExportLines::ExportLines(std::string_view bytes, std::string file)
    : rest_(bytes), file_(std::move(file)) {
  if (rest_.starts_with(kUtf16Mark)) {
    rest_.remove_prefix(kUtf16Mark.size());
    utf16_ = true;
  } else if (rest_.starts_with(kUtf8Mark)) {
    rest_.remove_prefix(kUtf8Mark.size());
  }
}

// Where the line end begins, or the end of the text.
std::size_t ExportLines::LineEnd() const {
  if (!utf16_) return std::min(rest_.find('\n'), rest_.size());
  std::size_t position = 0;
  while (position + 1 < rest_.size() && (rest_[position] != '\n' || rest_[position + 1] != '\0'))
    position += 2;
  return position + 1 < rest_.size() ? position : rest_.size();
}

bool ExportLines::Next(std::wstring& line) {
  if (rest_.empty()) return false;
  ++number_;
  const std::size_t end = LineEnd();
  const std::string_view bytes = rest_.substr(0, end);
  rest_.remove_prefix(std::min(end + (utf16_ ? 2 : 1), rest_.size()));
  if (utf16_) {
    if (!FromUtf16LittleEndian(bytes, line)) Fail(L"not UTF-16 text");
  } else {
    line = FromUtf8(bytes);
    if (ToUtf8(line) != bytes) Fail(L"not UTF-8 text");
  }
  if (line.ends_with(L'\r')) line.pop_back();
  if (line.find(L'\0') != std::wstring::npos) Fail(L"a NUL character");
  return true;
}

void ExportLines::Fail(std::wstring_view reason) const {
  std::wstring detail = FromUtf8(file_) + L", line " + std::to_wstring(number_) + L": ";
  detail += reason;
  throw InvalidFileFormat(detail);
}

}  // namespace pxscheduler
