#include <algorithm>

#include "letters/html/block_writer.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

// The bullets that HTML's lists know by name; another one is given as it is.
std::string BulletStyle(const std::wstring& bullet) {
  static const std::map<std::wstring, std::string> names = {
      {L"\u2022", "disc"},   {L"\u25CF", "disc"},   {L"\u00B7", "disc"},   {L"o", "circle"},
      {L"\u25CB", "circle"}, {L"\u25E6", "circle"}, {L"\u25AA", "square"}, {L"\u25A0", "square"}};
  if (const auto found = names.find(bullet); found != names.end()) return found->second;
  if (bullet.empty() || bullet.find_first_of(L"'\"\\<>&;") != std::wstring::npos) return "disc";
  return "'" + ToUtf8(bullet) + "\u00A0'";
}

}  // namespace

std::int32_t BlockWriter::OpenItemList(const Paragraph& paragraph) {
  const ParagraphFormat& format = document_.paragraph_formats[paragraph.format];
  while (lists_.size() > lists_outside_ &&
         (lists_.back().list != format.list || lists_.back().level > format.list_level))
    CloseLists(lists_.size() - lists_outside_ - 1);
  const ListLevel& level = document_.lists[format.list - 1U].levels.at(format.list_level);
  if (!(lists_.size() > lists_outside_ && lists_.back().level == format.list_level))
    OpenListOf(paragraph, level);
  else
    html_ += "</li>\n";
  auto& counters = counters_[format.list];
  ++counters.at(format.list_level);
  std::fill(counters.begin() + format.list_level + 1, counters.end(), 0);
  return lists_.back().first_indent;
}

void BlockWriter::OpenListOf(const Paragraph& paragraph, const ListLevel& level) {
  const ParagraphFormat& format = document_.paragraph_formats[paragraph.format];
  std::int32_t outside = 0;
  for (std::size_t i = lists_outside_; i < lists_.size(); ++i) outside += lists_[i].indent;
  const bool numbered = level.number_style != 0;
  const std::int32_t indent = std::max(240, format.left_indent - outside);
  auto& counters = counters_[format.list];
  std::int32_t& counted = counters.at(format.list_level);
  if (lists_.size() == lists_outside_ && !document_.lists[format.list - 1U].counts_on)
    counters = {};
  if (paragraph.list_number > 0) counted = paragraph.list_number - level.start;
  const std::int32_t start = level.start + counted;
  lists_.push_back({format.list, format.list_level, indent, format.left_indent, numbered});
  Css css;
  css.Add("margin", "0");
  css.Add("padding", FourSides(0, 0, 0, indent));
  if (!numbered) css.Add("list-style-type", BulletStyle(level.bullet));
  html_ += numbered ? "<ol" : "<ul";
  if (numbered && level.number_style != L'1')
    html_ += std::string(" type=\"") + static_cast<char>(level.number_style) + "\"";
  if (numbered && start != 1) html_ += " start=\"" + std::to_string(start) + "\"";
  html_ += css.Attribute() + ">\n";
}

void BlockWriter::CloseLists(std::size_t depth) {
  for (; lists_.size() > lists_outside_ + depth; lists_.pop_back())
    html_ += lists_.back().numbered ? "</li>\n</ol>\n" : "</li>\n</ul>\n";
}

}  // namespace pxscheduler
