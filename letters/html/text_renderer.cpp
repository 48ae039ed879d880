#include "letters/html/text_renderer.h"

#include <algorithm>
#include <utility>

#include "letters/html/html_elements.h"
#include "letters/html/link_text.h"
#include "letters/rtf/list_marker.h"
#include "text/bracket_token.h"

namespace pxscheduler {
namespace {

constexpr std::size_t kDeepestTable = 8;
constexpr std::size_t kDeepestIndent = 40;
constexpr int kMostBlankLines = 2;

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
    --preformatted_;
  } else if (name == "ul" || name == "ol") {
    lists_.pop_back();
  } else if (IsElement(name, {"li", "blockquote", "dd"})) {
    marker_.reset();
    indents_.pop_back();
  } else if (name == "table") {
    if (tables_too_deep_ > 0)
      --tables_too_deep_;
    else
      CloseTable();
  } else if (name == "td" || name == "th") {
    if (tables_too_deep_ > 0)
      FinishParagraph();
    else
      CloseCell();
  }
}

void TextRenderer::Break() {
  std::wstring& text = flows_.back().text;
  if (text.ends_with(L' ')) text.pop_back();
  text += L'\n';
}

void TextRenderer::OpenItem(const HtmlAttributes& attributes) {
  std::wstring marker = L"* ";
  if (!lists_.empty() && lists_.back().numbered) {
    List& list = lists_.back();
    list.next = NumberAttribute(attributes, "value", list.next);
    marker = ListNumber(list.next++, list.style) + L". ";
  }
  Indent(marker.size());
  marker_ = marker;
}

std::wstring TextRenderer::IndentText() const {
  std::size_t width = 0;
  const std::size_t outside = indents_outside_.empty() ? 0 : indents_outside_.back();
  for (std::size_t i = indents_.size(); i > outside && width < kDeepestIndent; --i)
    width += indents_[i - 1];
  std::wstring blanks(std::min(width, kDeepestIndent), L' ');
  return blanks;
}

void TextRenderer::AddBlock(std::wstring text, bool preformatted) {
  Flow& flow = flows_.back();
  TextBlock block;
  block.text = std::move(text);
  block.rest_indent = IndentText();
  block.first_indent = block.rest_indent;
  if (marker_) {
    const std::size_t room = std::min(marker_->size(), block.first_indent.size());
    block.first_indent.replace(block.first_indent.size() - room, room, *marker_);
    marker_.reset();
  }
  block.blank_lines_before = std::min(flow.blank_lines, kMostBlankLines);
  block.preformatted = preformatted;
  flow.blank_lines = 0;
  flow.blocks.push_back(std::move(block));
}

void TextRenderer::FinishParagraph() {
  Flow& flow = flows_.back();
  std::wstring text = std::exchange(flow.text, {});
  for (Link& link : links_)
    if (link.flow == flows_.size()) link.start = 0;
  if (preformatted_ > 0) {
    if (text.starts_with(L'\n')) text.erase(0, 1);
    if (text.ends_with(L'\n')) text.pop_back();
    if (!text.empty()) AddBlock(std::move(text), true);
    return;
  }
  if (text.ends_with(L'\n')) text.pop_back();  // a break at the end of a block shows nothing
  if (text.find_first_not_of(L" \n") == std::wstring::npos) {
    flow.blank_lines += static_cast<int>(std::ranges::count(text, L'\n'));
    return;
  }
  if (text.find_first_not_of(L" \n\u00A0") == std::wstring::npos) {
    ++flow.blank_lines;
    return;
  }
  AddBlock(std::move(text), false);
}

void TextRenderer::UnderlineHeading(wchar_t underline) {
  std::vector<TextBlock>& blocks = flows_.back().blocks;
  if (underline == 0 || blocks.empty() || blocks.back().preformatted) return;
  // The length of a heading with a token in it is not known yet.
  const std::wstring& text = blocks.back().text;
  for (std::size_t i = text.find(L'['); i != std::wstring::npos; i = text.find(L'[', i + 1))
    if (BracketTokenLength(std::wstring_view(text).substr(i)) > 0) return;
  blocks.back().underline = underline;
}

void TextRenderer::CloseLink() {
  const Link link = std::move(links_.back());
  links_.pop_back();
  if (link.address.empty() || link.flow != flows_.size()) return;
  std::wstring& text = flows_.back().text;
  const std::wstring_view shown(text);
  if (NamesAddress(shown.substr(std::min(link.start, text.size())), link.address)) return;
  const bool blank_after = text.ends_with(L' ');
  if (!text.empty() && !blank_after && text.back() != L'\n') text += L' ';
  text += L"<" + link.address + L">";
  if (blank_after) text += L' ';
}

}  // namespace pxscheduler
