#include "letters/html/text_renderer.h"

#include <algorithm>
#include <utility>

#include "letters/html/html_elements.h"
#include "letters/html/link_text.h"

namespace pxscheduler {
namespace {

constexpr std::size_t kDeepestTable = 8;

bool IsWhiteSpace(wchar_t character) {
  return character == L' ' || (character >= L'\t' && character <= L'\r');
}

}  // namespace

void TextRenderer::StartElement(std::string_view name, const HtmlAttributes& attributes) {
  const InlineStyle style = ReadInlineStyle(AttributeValue(attributes, "style"));
  Element element;
  element.name = name;
  element.hidden = IsUnseen(name) || style.hidden;
  if (element.hidden) ++hidden_;
  if (hidden_ == 0) {
    if (IsBlock(name)) {
      FinishParagraph();
      // What an alignment in the cell says is meant for the cell.
      if (style.right_aligned && !tables_.empty() && tables_.back().in_cell)
        tables_.back().cell.right_aligned = true;
      const int usual = StandsApart(name) && !(IsElement(name, {"ul", "ol"}) && !lists_.empty());
      Flow& flow = flows_.back();
      flow.blank_lines = std::max(flow.blank_lines, style.margin_top.value_or(usual));
      element.blank_lines_after = style.margin_bottom.value_or(usual);
    }
    Open(name, attributes, style);
  }
  elements_.push_back(std::move(element));
}

void TextRenderer::EndElement(std::string_view name) {
  if (elements_.empty()) return;
  const Element element = std::move(elements_.back());
  elements_.pop_back();
  if (hidden_ == 0) {
    if (IsBlock(name)) FinishParagraph();
    Close(name);
    Flow& flow = flows_.back();
    flow.blank_lines = std::max(flow.blank_lines, element.blank_lines_after);
  }
  if (element.hidden) --hidden_;
}

void TextRenderer::Text(const std::wstring& text) {
  if (hidden_ > 0) return;
  std::wstring& paragraph = flows_.back().text;
  for (const wchar_t character : text) {
    if (preformatted_ > 0) {
      if (character == L'\t')
        paragraph.append(4, L' ');
      else if (character != L'\r')
        paragraph += character;
    } else if (IsWhiteSpace(character)) {
      if (!paragraph.empty() && paragraph.back() != L' ' && paragraph.back() != L'\n')
        paragraph += L' ';
    } else if (character >= L' ' && character != L'\u00AD' && character != L'\u200B') {
      paragraph += character;
    }
  }
}

std::wstring TextRenderer::Result() {
  while (!tables_.empty()) CloseTable();
  FinishParagraph();
  std::wstring text;
  for (const std::wstring& line : LayOut(flows_.front().blocks, kWidth)) text += line + L'\n';
  return text;
}

void TextRenderer::Open(std::string_view name, const HtmlAttributes& attributes,
                        const InlineStyle& style) {
  if (name == "br") {
    Break();
  } else if (name == "hr") {
    AddBlock(std::wstring(40, L'-'), true);
  } else if (name == "img") {
    Text(std::wstring(AttributeValue(attributes, "alt")));
  } else if (name == "a") {
    links_.push_back({ReadableAddress(AttributeValue(attributes, "href")),
                      flows_.back().text.size(), flows_.size()});
  } else if (name == "pre") {
    ++preformatted_;
  } else if (name == "ul" || name == "ol") {
    const std::wstring_view type = AttributeValue(attributes, "type");
    lists_.push_back({name == "ol", NumberAttribute(attributes, "start", 1),
                      style.list_style != 0 ? style.list_style
                      : type.size() == 1    ? type[0]
                                            : L'1'});
  } else if (name == "li") {
    OpenItem(attributes);
  } else if (name == "blockquote" || name == "dd") {
    Indent(4);
  } else if (name == "table") {
    if (tables_.size() < kDeepestTable)
      tables_.emplace_back();
    else
      ++tables_too_deep_;
  } else if (tables_too_deep_ > 0) {
    if (name == "tr" || name == "td" || name == "th") FinishParagraph();
  } else if (name == "tr" && !tables_.empty()) {
    CloseCell();
    tables_.back().rows.emplace_back();
  } else if ((name == "td" || name == "th") && !tables_.empty()) {
    OpenCell(name, attributes, style);
  }
}

void TextRenderer::Close(std::string_view name) {
  if (IsHeading(name)) {
    UnderlineHeading(name[1] == '1' ? L'=' : name[1] == '2' ? L'-' : L'\0');
  } else if (name == "a") {
    CloseLink();
  } else if (name == "pre") {
    if (preformatted_ > 0) --preformatted_;
  } else if (name == "ul" || name == "ol") {
    if (!lists_.empty()) lists_.pop_back();
  } else if (IsElement(name, {"li", "blockquote", "dd"})) {
    marker_.reset();
    if (!indents_.empty()) indents_.pop_back();
  } else if (name == "table") {
    if (tables_too_deep_ > 0)
      --tables_too_deep_;
    else if (!tables_.empty())
      CloseTable();
  } else if (name == "td" || name == "th") {
    if (tables_too_deep_ > 0)
      FinishParagraph();
    else if (!tables_.empty())
      CloseCell();
  }
}

}  // namespace pxscheduler
