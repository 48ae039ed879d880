#include "letters/html/html_text.h"

#include <algorithm>
#include <cstddef>

#include "letters/html/html_page.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

// HTML shows neither tabs nor a blank that begins a line or follows another one.
std::wstring WithVisibleBlanks(std::wstring_view line) {
  constexpr std::size_t kTabWidth = 8;
  std::wstring visible;
  for (const wchar_t character : line) {
    const bool unseen = visible.empty() || visible.back() == L' ';
    if (character == L'\t')
      visible.append(kTabWidth - visible.size() % kTabWidth, L'\u00A0');
    else
      visible += character == L' ' && unseen ? L'\u00A0' : character;
  }
  return visible;
}

}  // namespace

void AppendEscaped(std::wstring_view text, std::string& html) {
  std::size_t plain = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const std::string_view entity = text[i] == L'&'        ? "&amp;"
                                    : text[i] == L'<'      ? "&lt;"
                                    : text[i] == L'>'      ? "&gt;"
                                    : text[i] == L'"'      ? "&quot;"
                                    : text[i] == L'\u00A0' ? "&nbsp;"
                                                           : "";
    if (entity.empty()) continue;
    AppendUtf8(text.substr(plain, i - plain), html);
    html += entity;
    plain = i + 1;
  }
  AppendUtf8(text.substr(plain), html);
}

std::string HtmlOfText(std::wstring_view text, const PageLayout& page) {
  std::string html = HtmlStart(page, {});
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_of(L"\r\n\f"), text.size());
    const std::wstring_view line = text.substr(0, end);
    html += "<p style=\"margin:0\">";
    AppendEscaped(line.empty() ? L"\u00A0" : WithVisibleBlanks(line), html);
    html += "</p>\n";
    text.remove_prefix(end);
    text.remove_prefix(text.starts_with(L"\r\n") ? 2 : text.empty() ? 0 : 1);
  }
  return html + HtmlEnd();
}

}  // namespace pxscheduler
