#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "letters/html/css.h"
#include "letters/html/run_writer.h"
#include "letters/html/table_grid.h"
#include "letters/rtf/document.h"

namespace pxscheduler {

// Its name in HTML and CSS.
std::string_view AlignmentName(Alignment alignment);

// Writes the blocks of a document as HTML: paragraphs, lists and tables.
class BlockWriter {
 public:
  BlockWriter(const Document& document, const CharacterFormat& around)
      : document_(document), around_(around), linked_places_(LinkedPlaces(document)) {}

  void Write(const std::vector<Block>& blocks);
  std::string& Html() { return html_; }

 private:
  struct OpenList {
    std::uint16_t list;
    std::uint8_t level;
    std::int32_t indent;        // of its text, from that of the list around it
    std::int32_t first_indent;  // what the document says of its first item
    bool numbered;
  };

  struct OpenTable {
    TableGrid grid;
    std::vector<const RowFormat*> rows;
    std::size_t row = 0;   // how many are begun
    std::size_t cell = 0;  // how many of the row are begun
    bool cell_open = false;
    bool covered = false;  // the open cell shows nothing
  };

  // Whether a merged cell covers what is being written.
  bool Covered() const;
  const ParagraphFormat& FormatOf(const Block& block) const;
  void WriteParagraph(const std::vector<Block>& blocks, std::size_t at);
  void AddParagraphStyle(const ParagraphFormat& format, Css& css) const;
  // The spaces before and after it, in twips.
  std::pair<std::int32_t, std::int32_t> SpacesOf(const std::vector<Block>& blocks,
                                                 std::size_t at) const;
  // Neighbouring paragraphs of the same borders and shading stand in one box.
  bool InBox(const ParagraphFormat& format) const;
  // CSS shows the larger of two neighbouring margins; most documents mean their sum.
  std::int32_t SpaceBefore(std::int32_t space) const;
  void OpenBox(const std::vector<Block>& blocks, std::size_t at);
  void CloseBox();

  // Leaves open the list that an item of this format belongs to, and returns the indent that the
  // document gives to the first item there.
  std::int32_t OpenItemList(const Paragraph& paragraph);
  void OpenListOf(const Paragraph& paragraph, const ListLevel& level);
  // Closes lists of the open cell, or of the text outside tables, until `depth` are left.
  void CloseLists(std::size_t depth);

  void StartTable(const std::vector<Block>& blocks, std::size_t at);
  void StartRow(std::uint32_t);
  void StartCell();
  void EndCell();
  void EndRow();
  void EndTable();
  void OpenCellElement(const RowFormat& row, const GridCell& cell);
  void CloseCellElement(OpenTable& table);

  const Document& document_;
  const CharacterFormat around_;
  const std::set<std::wstring> linked_places_;
  std::string html_;
  std::vector<OpenList> lists_;
  std::size_t lists_outside_ = 0;  // how many of them are open outside the open cell
  std::vector<std::size_t> lists_before_;
  std::map<std::uint16_t, std::array<std::int32_t, 9>>
      counters_;  // items so far, by list and level
  std::vector<OpenTable> tables_;
  std::optional<ParagraphFormat> box_;
  std::size_t box_end_ = 0;           // the last block in it
  std::int32_t box_space_after_ = 0;  // below it, in twips
  std::int32_t space_above_ = 0;      // below what stands above the next paragraph
};

}  // namespace pxscheduler
