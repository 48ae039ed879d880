#include <algorithm>
#include <utility>

#include "letters/html/text_renderer.h"
#include "text/ascii_case.h"

namespace pxscheduler {

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
      style.right_aligned || LowerAscii(AttributeValue(attributes, "align")) == L"right";
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
