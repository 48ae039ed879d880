#include "letters/rtf/document_builder.h"

#include <algorithm>
#include <utility>

#include "letters/rtf/list_marker.h"
#include "letters/rtf/whole_tokens.h"

namespace pxscheduler {
namespace {

std::uint32_t Index(std::size_t index) { return static_cast<std::uint32_t>(index); }

template <typename Format>
std::uint32_t Intern(const Format& format, std::vector<Format>& formats,
                     std::map<Format, std::uint32_t>& indices) {
  const auto [position, added] = indices.try_emplace(format, Index(formats.size()));
  if (added) formats.push_back(format);
  return position->second;
}

}  // namespace

DocumentBuilder::DocumentBuilder(Document& document) : document_(document) {
  stories_.emplace_back();
}

std::uint32_t DocumentBuilder::FormatIndex(const CharacterFormat& format) {
  return Intern(format, document_.character_formats, character_formats_);
}

std::uint32_t DocumentBuilder::FormatIndex(const ParagraphFormat& format) {
  return Intern(format, document_.paragraph_formats, paragraph_formats_);
}

void DocumentBuilder::Add(Block::Kind kind, std::size_t index) {
  Top().blocks.push_back({kind, Index(index)});
}

void DocumentBuilder::AppendText(std::wstring_view text, const CharacterFormat& format,
                                 std::uint32_t link) {
  if (text.empty() || format.hidden) return;
  Story& story = Top();
  if (story.runs.size() > story.marker_runs) {
    Run& last = story.runs.back();
    if (last.kind == Run::Kind::kText && last.link == link &&
        document_.character_formats[last.format] == format) {
      story.text += text;
      last.length += Index(text.size());
      return;
    }
  }
  story.runs.push_back(
      {Run::Kind::kText, FormatIndex(format), link, Index(story.text.size()), Index(text.size())});
  story.text += text;
}

void DocumentBuilder::AppendPicture(Picture picture, const CharacterFormat& format,
                                    std::uint32_t link) {
  if (format.hidden) return;
  Top().runs.push_back(
      {Run::Kind::kPicture, FormatIndex(format), link, Index(document_.pictures.size()), 0});
  document_.pictures.push_back(std::move(picture));
}

void DocumentBuilder::AppendBookmark(std::wstring name) {
  Top().runs.push_back({Run::Kind::kBookmark, 0, 0, Index(document_.bookmarks.size()), 0});
  document_.bookmarks.push_back(std::move(name));
}

void DocumentBuilder::EndMarker() { Top().marker_runs = Top().runs.size(); }

bool DocumentBuilder::HasContent() const { return !stories_.back().runs.empty(); }

std::wstring DocumentBuilder::DropMarker(Story& story) {
  std::uint32_t dropped = 0;
  for (std::size_t i = 0; i < story.marker_runs; ++i) dropped += story.runs[i].length;
  std::wstring marker = story.text.substr(0, dropped);
  story.text.erase(0, dropped);
  story.runs.erase(story.runs.begin(),
                   story.runs.begin() + static_cast<std::ptrdiff_t>(story.marker_runs));
  for (Run& run : story.runs)
    if (run.kind == Run::Kind::kText) run.begin -= dropped;
  return marker;
}

void DocumentBuilder::AddParagraph(ParagraphFormat format, const CharacterFormat& mark) {
  Story& story = Top();
  long list_number = 0;
  if (format.list > 0) {
    const ListLevel& level = document_.lists[format.list - 1U].levels[format.list_level];
    if (level.simple)
      list_number = NumberOfMarker(DropMarker(story), level.number_style);
    else
      format.list = 0;
  }
  MakeTokensWhole(story.text, story.runs);
  const std::uint32_t offset = Index(document_.text.size());
  const Paragraph paragraph{FormatIndex(format), FormatIndex(mark), Index(document_.runs.size()),
                            Index(story.runs.size()), static_cast<std::int32_t>(list_number)};
  for (Run run : story.runs) {
    if (run.kind == Run::Kind::kText) run.begin += offset;
    document_.runs.push_back(run);
  }
  document_.text += story.text;
  story.text.clear();
  story.runs.clear();
  story.marker_runs = 0;
  Add(Block::Kind::kParagraph, document_.paragraphs.size());
  document_.paragraphs.push_back(paragraph);
}

void DocumentBuilder::OpenCells(int depth) {
  const auto wanted = static_cast<std::size_t>(std::clamp(depth, 0, kDeepestTable));
  CloseTables(wanted);
  for (std::size_t i = 0; i < wanted; ++i) {
    if (i == Top().tables.size()) {
      Add(Block::Kind::kTableStart);
      Top().tables.emplace_back();
    }
    OpenTable& table = Top().tables[i];
    if (!table.in_row) {
      table.row = Index(document_.rows.size());
      table.cells = 0;
      table.in_row = true;
      document_.rows.emplace_back();
      Add(Block::Kind::kRowStart, table.row);
    }
    if (!table.in_cell) {
      Add(Block::Kind::kCellStart);
      table.in_cell = true;
      ++table.cells;
    }
  }
}

void DocumentBuilder::CloseRow() {
  OpenTable& table = Top().tables.back();
  if (table.in_cell) Add(Block::Kind::kCellEnd);
  if (table.in_row) Add(Block::Kind::kRowEnd);
  table.in_cell = false;
  table.in_row = false;
}

void DocumentBuilder::CloseTables(std::size_t depth) {
  while (Top().tables.size() > depth) {
    CloseRow();
    Add(Block::Kind::kTableEnd);
    Top().tables.pop_back();
  }
}

void DocumentBuilder::EndParagraph(const ParagraphFormat& format, const CharacterFormat& mark,
                                   int depth) {
  OpenCells(depth);
  AddParagraph(format, mark);
}

void DocumentBuilder::EndCell(const ParagraphFormat& format, const CharacterFormat& mark,
                              int depth) {
  OpenCells(std::max(1, depth));
  AddParagraph(format, mark);
  Add(Block::Kind::kCellEnd);
  Top().tables.back().in_cell = false;
}

void DocumentBuilder::EndRow(const RowFormat& format, int depth) {
  const auto wanted = static_cast<std::size_t>(std::clamp(depth, 1, kDeepestTable));
  CloseTables(wanted);
  if (Top().tables.size() < wanted || !Top().tables.back().in_row) return;
  document_.rows[Top().tables.back().row] = format;
  CloseRow();
}

void DocumentBuilder::BeginStory(StoryKind kind) {
  stories_.emplace_back();
  Top().kind = kind;
}

void DocumentBuilder::CloseStory(const ParagraphFormat& format, const CharacterFormat& mark) {
  if (HasContent()) {
    if (!Top().tables.empty() && !Top().tables.back().in_cell) CloseTables(0);
    AddParagraph(format, mark);
  }
  CloseTables(0);
}

void DocumentBuilder::EndStory(const ParagraphFormat& format, const CharacterFormat& mark) {
  if (stories_.size() < 2) return;
  CloseStory(format, mark);
  const Story story = std::move(stories_.back());
  stories_.pop_back();
  std::vector<Block>& blocks = story.kind == StoryKind::kNote ? document_.notes : Top().blocks;
  blocks.insert(blocks.end(), story.blocks.begin(), story.blocks.end());
}

void DocumentBuilder::Finish(const ParagraphFormat& format, const CharacterFormat& mark) {
  while (stories_.size() > 1) EndStory(format, mark);
  CloseStory(format, mark);
  document_.body = std::move(Top().blocks);
}

}  // namespace pxscheduler
