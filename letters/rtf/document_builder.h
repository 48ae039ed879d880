#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "letters/rtf/document.h"

namespace pxscheduler {

// Builds a document from what a reader comes across: text and objects first, then the end of the
// paragraph, cell or row that holds them. Each bracketed token becomes part of one run, in the
// format of its "[".
class DocumentBuilder {
 public:
  static constexpr std::size_t kDeepestStory = 8;
  static constexpr int kDeepestTable = 8;  // tables nested deeper become part of the one outside

  // Where content goes: a note to the document's notes, a box before the paragraph around it.
  enum class StoryKind : std::uint8_t { kBody, kNote, kBox };

  explicit DocumentBuilder(Document& document);

  void AppendText(std::wstring_view text, const CharacterFormat& format, std::uint32_t link);
  void AppendPicture(Picture picture, const CharacterFormat& format, std::uint32_t link);
  void AppendBookmark(std::wstring name);
  // Ends the marker of a list item, which is all of the open paragraph so far. It is dropped where
  // the paragraph becomes an item of a list that shows markers itself.
  void EndMarker();
  // Whether the open paragraph has content.
  bool HasContent() const;
  bool InNote() const { return stories_.back().kind == StoryKind::kNote; }

  // `depth` is how many tables the paragraph stands in.
  void EndParagraph(const ParagraphFormat& format, const CharacterFormat& mark, int depth);
  // `depth` is 1 for a cell of an outermost table.
  void EndCell(const ParagraphFormat& format, const CharacterFormat& mark, int depth);
  void EndRow(const RowFormat& format, int depth);

  // Whether no more stories may be begun inside the open one.
  bool InDeepestStory() const { return stories_.size() == kDeepestStory; }
  void BeginStory(StoryKind kind);
  void EndStory(const ParagraphFormat& format, const CharacterFormat& mark);

  // Closes what is open.
  void Finish(const ParagraphFormat& format, const CharacterFormat& mark);

 private:
  struct OpenTable {
    std::uint32_t row = 0;
    std::uint32_t cells = 0;  // of the open row, begun so far
    bool in_row = false;
    bool in_cell = false;
  };

  struct Story {
    StoryKind kind = StoryKind::kBody;
    std::vector<Block> blocks;
    std::vector<OpenTable> tables;
    std::wstring text;  // of the open paragraph; Run::begin counts from its start
    std::vector<Run> runs;
    std::size_t marker_runs = 0;
  };

  Story& Top() { return stories_.back(); }
  std::uint32_t FormatIndex(const CharacterFormat& format);
  std::uint32_t FormatIndex(const ParagraphFormat& format);
  void Add(Block::Kind kind, std::size_t index = 0);
  void AddParagraph(ParagraphFormat format, const CharacterFormat& mark);
  // Returns the text of the marker.
  std::wstring DropMarker(Story& story);
  // Opens tables, a row and a cell, and closes tables, until `depth` cells are open.
  void OpenCells(int depth);
  void CloseTables(std::size_t depth);
  void CloseRow();
  void CloseStory(const ParagraphFormat& format, const CharacterFormat& mark);

  Document& document_;
  std::vector<Story> stories_;
  std::map<CharacterFormat, std::uint32_t> character_formats_;
  std::map<ParagraphFormat, std::uint32_t> paragraph_formats_;
};

}  // namespace pxscheduler
