#include <algorithm>
#include <utility>

#include "letters/html/link_text.h"
#include "letters/html/text_renderer.h"
#include "letters/rtf/list_marker.h"
#include "text/bracket_token.h"

namespace pxscheduler {
namespace {

constexpr std::size_t kDeepestIndent = 40;
constexpr int kMostBlankLines = 2;

}  // namespace

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
  if (links_.empty()) return;
  const Link link = std::move(links_.back());
  links_.pop_back();
  if (link.address.empty() || link.flow != flows_.size()) return;
  std::wstring& text = flows_.back().text;
  const std::wstring shown =
      Trimmed(std::wstring_view(text).substr(std::min(link.start, text.size())));
  if (NamesAddress(shown, link.address)) return;
  const bool blank_after = text.ends_with(L' ');
  if (!text.empty() && !blank_after && text.back() != L'\n') text += L' ';
  text += L"<" + link.address + L">";
  if (blank_after) text += L' ';
}

void TextRenderer::OpenCell(std::string_view name, const HtmlAttributes& attributes,
                            const InlineStyle& style) {
  CloseCell();
  Table& table = tables_.back();
  if (table.rows.empty()) table.rows.emplace_back();
  table.cell = {};
  table.cell.header = name == "th";
  const auto span = [&](std::string_view attribute) {
    return static_cast<std::size_t>(std::max(1L, NumberAttribute(attributes, attribute, 1)));
  };
  table.cell.column_span = span("colspan");
  table.cell.row_span = span("rowspan");
  table.cell.right_aligned =
      style.right_aligned || Lowered(AttributeValue(attributes, "align")) == L"right";
  table.in_cell = true;
  flows_.emplace_back();
  indents_outside_.push_back(indents_.size());
}

void TextRenderer::CloseCell() {
  if (tables_.empty() || !tables_.back().in_cell) return;
  FinishParagraph();
  Table& table = tables_.back();
  table.cell.blocks = std::move(flows_.back().blocks);
  flows_.pop_back();
  indents_outside_.pop_back();
  table.rows.back().push_back(std::move(table.cell));
  table.in_cell = false;
}

void TextRenderer::CloseTable() {
  CloseCell();
  FinishParagraph();  // what stood between the cells goes before the table
  Table table = std::move(tables_.back());
  tables_.pop_back();
  const std::wstring indent = IndentText();
  Flow& flow = flows_.back();
  for (TextBlock& block : LayOutTable(std::move(table.rows), kWidth - indent.size())) {
    block.first_indent.insert(0, indent);
    block.rest_indent.insert(0, indent);
    block.blank_lines_before =
        std::max(block.blank_lines_before, std::exchange(flow.blank_lines, 0));
    flow.blocks.push_back(std::move(block));
  }
}

}  // namespace pxscheduler
