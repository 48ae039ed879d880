#include "letters/html/html_parser.h"

#include <libxml/HTMLparser.h>

#include <algorithm>
#include <cstddef>
#include <cwchar>
#include <memory>

#include "text/utf8.h"

namespace pxscheduler {
namespace {

// The parser looks through the open elements for the one that an end tag closes. A document that
// nests deeper than this is read on from there as if all of them had been closed, so that the time
// stays in proportion to its length.
constexpr std::size_t kDeepestNesting = 500;

// The parser counts bytes in an int.
constexpr std::size_t kLongestPart = std::size_t{1} << 30;

std::string_view View(const xmlChar* text) { return reinterpret_cast<const char*>(text); }

class SaxAdapter {
 public:
  SaxAdapter(htmlParserCtxtPtr context, HtmlHandler& handler)
      : context_(context), handler_(handler) {}

  void Start(std::string_view name, const xmlChar** attributes) {
    if (stopped_at_ != 0) return;
    attributes_.clear();
    for (; attributes != nullptr && attributes[0] != nullptr; attributes += 2)
      attributes_.emplace_back(View(attributes[0]), attributes[1] == nullptr
                                                        ? std::wstring()
                                                        : FromUtf8(View(attributes[1])));
    handler_.StartElement(name, attributes_);
    open_.emplace_back(name);
    if (open_.size() > kDeepestNesting) Stop();
  }

  void End(std::string_view name) {
    if (stopped_at_ != 0) return;
    const auto opened = std::find(open_.rbegin(), open_.rend(), name);
    if (opened == open_.rend()) return;
    CloseDownTo(static_cast<std::size_t>(open_.rend() - opened) - 1);
  }

  void Text(const xmlChar* text, int length) {
    if (stopped_at_ == 0)
      handler_.Text(FromUtf8({reinterpret_cast<const char*>(text), std::size_t(length)}));
  }

  void CloseDownTo(std::size_t depth) {
    for (; open_.size() > depth; open_.pop_back()) handler_.EndElement(open_.back());
  }

  // How many bytes were read when the nesting became too deep; 0 while it is not.
  std::size_t StoppedAt() const { return stopped_at_; }

 private:
  void Stop() {
    const auto* input = context_->input;
    // A start tag is reported before its ">" is read.
    stopped_at_ = input->consumed + std::size_t(input->cur - input->base);
    xmlStopParser(context_);
  }

  htmlParserCtxtPtr context_;
  HtmlHandler& handler_;
  HtmlAttributes attributes_;
  std::vector<std::string> open_;
  std::size_t stopped_at_ = 0;
};

void StartElement(void* adapter, const xmlChar* name, const xmlChar** attributes) {
  static_cast<SaxAdapter*>(adapter)->Start(View(name), attributes);
}

void EndElement(void* adapter, const xmlChar* name) {
  static_cast<SaxAdapter*>(adapter)->End(View(name));
}

void Characters(void* adapter, const xmlChar* text, int length) {
  static_cast<SaxAdapter*>(adapter)->Text(text, length);
}

// Returns the bytes that were read.
std::size_t ParsePart(std::string_view html, HtmlHandler& handler) {
  html = html.substr(0, kLongestPart);
  const std::unique_ptr<htmlParserCtxt, decltype(&htmlFreeParserCtxt)> context(htmlNewParserCtxt(),
                                                                               htmlFreeParserCtxt);
  if (context == nullptr) return html.size();
  SaxAdapter adapter(context.get(), handler);
  htmlSAXHandler callbacks{};
  callbacks.startElement = StartElement;
  callbacks.endElement = EndElement;
  callbacks.characters = Characters;
  callbacks.ignorableWhitespace = Characters;
  *context->sax = callbacks;
  context->userData = &adapter;
  htmlCtxtReadMemory(context.get(), html.data(), static_cast<int>(html.size()), nullptr, "UTF-8",
                     HTML_PARSE_RECOVER | HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING |
                         HTML_PARSE_NONET | HTML_PARSE_IGNORE_ENC);
  adapter.CloseDownTo(0);
  if (adapter.StoppedAt() == 0 || adapter.StoppedAt() >= html.size()) return html.size();
  return std::max<std::size_t>(1, adapter.StoppedAt());
}

}  // namespace

std::wstring_view AttributeValue(const HtmlAttributes& attributes, std::string_view name) {
  const auto found = std::ranges::find(
      attributes, name, [](const auto& pair) -> std::string_view { return pair.first; });
  return found == attributes.end() ? std::wstring_view() : std::wstring_view(found->second);
}

long NumberAttribute(const HtmlAttributes& attributes, std::string_view name, long otherwise) {
  constexpr std::size_t kMostDigits = 9;
  const std::wstring start(AttributeValue(attributes, name).substr(0, kMostDigits));
  wchar_t* end = nullptr;
  const long number = std::wcstol(start.c_str(), &end, 10);
  return end == start.c_str() ? otherwise : number;
}

void ParseHtml(std::wstring_view html, HtmlHandler& handler) {
  std::string bytes = ToUtf8(html);
  // The parser takes a NUL for the end of the document.
  std::ranges::replace(bytes, '\0', ' ');
  for (std::string_view rest = bytes; !rest.empty();) {
    rest.remove_prefix(ParsePart(rest, handler));
    if (rest.starts_with('>')) rest.remove_prefix(1);
  }
}

}  // namespace pxscheduler
