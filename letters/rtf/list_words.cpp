#include <algorithm>
#include <cstdint>
#include <string_view>
#include <utility>

#include "letters/rtf/control_words.h"
#include "letters/rtf/rtf_parser.h"

namespace pxscheduler {
namespace {

constexpr std::size_t kMostLists = 60'000;

// The number format codes (RTF 1.9.1, "\levelnfc") that HTML's lists have too; 0 for the others.
wchar_t NumberStyle(std::int32_t code) {
  constexpr std::wstring_view kStyles = L"1IiAa";
  const auto index = static_cast<std::size_t>(code);
  return index < kStyles.size() ? kStyles[index] : L'\0';
}

std::uint8_t Level(const Parameter& parameter) {
  return static_cast<std::uint8_t>(std::clamp(parameter.Number(), 0, 8));
}

ListLevel& OpenLevel(RtfParser& parser) {
  const std::size_t levels = parser.list.levels;
  return parser.list.list.levels.at(std::min<std::size_t>(levels > 0 ? levels - 1 : 0, 8));
}

template <wchar_t kStyle>
void SetOldStyle(RtfParser& parser, const Parameter&) {
  parser.old_list.level.number_style = kStyle;
}

std::uint16_t AddList(RtfParser& parser, List list) {
  std::vector<List>& lists = parser.document.lists;
  if (lists.size() >= kMostLists) return 0;
  lists.push_back(std::move(list));
  return static_cast<std::uint16_t>(lists.size());
}

std::uint16_t OldList(RtfParser& parser, const ListLevel& level) {
  const std::wstring key = std::to_wstring(level.number_style) + L' ' +
                           std::to_wstring(level.start) + L' ' + level.bullet;
  const auto [position, added] = parser.old_lists.try_emplace(key);
  if (added) {
    List list;
    list.levels.fill(level);
    list.counts_on = false;
    position->second = AddList(parser, list);
  }
  return position->second;
}

// An item says what its own level looks like, so the list comes to know its levels one by one.
std::uint16_t OldOutline(RtfParser& parser, const ListLevel& level, std::size_t number) {
  if (parser.old_outline > 0) {
    ListLevel& known = parser.document.lists[parser.old_outline - 1U].levels.at(number);
    if (!known.simple) known = level;
    if (known == level) return parser.old_outline;
  }
  List list;
  list.levels.at(number) = level;
  list.counts_on = false;
  parser.old_outline = AddList(parser, list);
  return parser.old_outline;
}

}  // namespace

// The text of a level's marker: its length, as many characters, among them the numbers 0 to 8 that
// stand for the number of that level, and a semicolon.
void EndLevelText(RtfParser& parser) {
  std::wstring text = std::exchange(parser.captured, {});
  if (text.empty() || parser.list.levels == 0 || parser.list.levels > 9) return;
  ListLevel& level = OpenLevel(parser);
  const auto length = static_cast<std::size_t>(static_cast<char32_t>(text.front()));
  text = text.substr(1, length);
  const auto own = static_cast<wchar_t>(parser.list.levels - 1);
  if (level.number_style == 0) {
    level.bullet = text;
    level.simple = text.size() == 1 && text.front() > 8;
  } else {
    level.simple = text == std::wstring{own, L'.'};
  }
}

void EndListOverride(RtfParser& parser) {
  const auto found = parser.lists_by_id.find(parser.list.id);
  if (found == parser.lists_by_id.end()) return;
  auto& [list, index] = found->second;
  if (std::ranges::find(parser.list.restarts, true) != parser.list.restarts.end()) {
    List restarted = list;
    for (std::size_t level = 0; level < restarted.levels.size(); ++level)
      if (parser.list.restarts.at(level))
        restarted.levels.at(level).start = parser.list.list.levels.at(level).start;
    parser.list_overrides[parser.list.override_number] = AddList(parser, std::move(restarted));
    return;
  }
  // Overrides of one list that change nothing count on together.
  if (index == 0) index = AddList(parser, list);
  parser.list_overrides[parser.list.override_number] = index;
}

void EndOldList(RtfParser& parser) {
  ListLevel level = std::exchange(parser.old_list.level, {});
  const std::int32_t depth = std::clamp(std::exchange(parser.old_list.depth, 0), 0, 9);
  const std::wstring before = std::exchange(parser.old_list.before, {});
  const std::wstring after = std::exchange(parser.old_list.after, {});
  if (std::exchange(parser.old_list.bullet, false)) {
    level.number_style = 0;
    level.bullet = before;
    level.simple = before.size() == 1;
  } else {
    level.simple = level.number_style != 0 && before.empty() && after == L".";
  }
  if (!level.simple) return;
  const auto list_level = static_cast<std::uint8_t>(std::max(1, depth) - 1);
  parser.state.paragraph.list =
      depth > 0 ? OldOutline(parser, level, list_level) : OldList(parser, level);
  parser.state.paragraph.list_level = list_level;
}

void AddListWords(ControlWords& words) {
  words.AddDestination({"listtable", "listoverridetable"}, Begin<Destination::kSkipText>);
  words.AddDestination({"listname", "levelnumbers", "pnseclvl"}, Begin<Destination::kSkip>);
  words.AddDestination("list", [](RtfParser& p, const Parameter&) {
    if (p.state.destination != Destination::kSkipText) return;
    p.Begin(Destination::kList);
    p.list = {};
  });
  words.AddDestination("listoverride", [](RtfParser& p, const Parameter&) {
    if (p.state.destination != Destination::kSkipText) return;
    p.Begin(Destination::kListOverride);
    p.list = {};
  });
  words.Add("listlevel", [](RtfParser& p, const Parameter&) {
    if (p.state.destination == Destination::kList) ++p.list.levels;
  });
  words.Add("lfolevel", [](RtfParser& p, const Parameter&) {
    if (p.state.destination == Destination::kListOverride) ++p.list.levels;
  });
  words.Add("listoverridestartat", [](RtfParser& p, const Parameter&) {
    if (p.list.levels > 0 && p.list.levels <= p.list.restarts.size())
      p.list.restarts.at(p.list.levels - 1) = true;
  });
  words.Add({"levelnfc", "levelnfcn"}, [](RtfParser& p, const Parameter& n) {
    OpenLevel(p).number_style = NumberStyle(n.Number());
  });
  words.Add("levelstartat",
            [](RtfParser& p, const Parameter& n) { OpenLevel(p).start = std::max(0, n.Or(1)); });
  words.AddDestination("leveltext", Begin<Destination::kLevelText>);
  words.Add("listid", [](RtfParser& p, const Parameter& n) { p.list.id = n.Number(); });
  words.Add("ls", [](RtfParser& p, const Parameter& n) {
    if (p.state.destination == Destination::kListOverride) {
      p.list.override_number = n.Number();
      return;
    }
    const auto found = p.list_overrides.find(n.Number());
    p.state.paragraph.list = found == p.list_overrides.end() ? std::uint16_t{0} : found->second;
  });
  words.Add("ilvl",
            [](RtfParser& p, const Parameter& n) { p.state.paragraph.list_level = Level(n); });

  words.AddDestination({"listtext", "pntext"}, [](RtfParser& p, const Parameter&) {
    if (p.InBody()) p.Begin(Destination::kMarker);
  });
  words.AddDestination("pn", [](RtfParser& p, const Parameter&) {
    p.Begin(Destination::kOldList);
    p.old_list = {};
  });
  words.AddDestination("pntxtb", Begin<Destination::kTextBefore>);
  words.AddDestination("pntxta", Begin<Destination::kTextAfter>);
  words.Add("pnlvlblt", [](RtfParser& p, const Parameter&) { p.old_list.bullet = true; });
  words.Add("pnlvl", [](RtfParser& p, const Parameter& n) { p.old_list.depth = n.Or(1); });
  words.Add("pnstart", [](RtfParser& p, const Parameter& n) {
    p.old_list.level.start = std::max(0, n.Or(1));
  });
  words.Add("pnf", [](RtfParser& p, const Parameter& n) { p.SetFont(n.Number()); });
  words.Add("pndec", SetOldStyle<L'1'>);
  words.Add("pnucrm", SetOldStyle<L'I'>);
  words.Add("pnlcrm", SetOldStyle<L'i'>);
  words.Add("pnucltr", SetOldStyle<L'A'>);
  words.Add("pnlcltr", SetOldStyle<L'a'>);
}

}  // namespace pxscheduler
