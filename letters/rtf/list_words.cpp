#include <algorithm>
#include <cstdint>
#include <string_view>
#include <utility>

#include "letters/rtf/reading.h"

namespace pxscheduler {
namespace {

constexpr std::size_t kMostLists = 60'000;

// The number format codes (RTF 1.9.1, "\levelnfc") that HTML's lists have too; 0 for the others.
wchar_t NumberStyle(std::int32_t code) {
  switch (code) {
    case 0:
      return L'1';
    case 1:
      return L'I';
    case 2:
      return L'i';
    case 3:
      return L'A';
    case 4:
      return L'a';
    default:
      return 0;
  }
}

std::uint8_t Level(const Word& word) {
  return static_cast<std::uint8_t>(std::clamp(word.Or(0), 0, 8));
}

ListLevel& OpenLevel(Reading& reading) {
  const std::size_t levels = reading.list.levels;
  return reading.list.list.levels.at(std::min<std::size_t>(levels > 0 ? levels - 1 : 0, 8));
}

template <wchar_t kStyle>
void SetOldStyle(Reading& reading, const Word&) {
  reading.old_list.level.number_style = kStyle;
}

std::uint16_t AddList(Reading& reading, List list) {
  std::vector<List>& lists = reading.document.lists;
  if (lists.size() >= kMostLists) return 0;
  lists.push_back(std::move(list));
  return static_cast<std::uint16_t>(lists.size());
}

std::uint16_t OldList(Reading& reading, const ListLevel& level) {
  const std::wstring key = std::to_wstring(level.number_style) + L' ' +
                           std::to_wstring(level.start) + L' ' + level.bullet;
  const auto [position, added] = reading.old_lists.try_emplace(key);
  if (added) {
    List list;
    list.levels.fill(level);
    list.counts_on = false;
    position->second = AddList(reading, list);
  }
  return position->second;
}

// An item says what its own level looks like, so the list comes to know its levels one by one.
std::uint16_t OldOutline(Reading& reading, const ListLevel& level, std::size_t number) {
  if (reading.old_outline > 0) {
    ListLevel& known = reading.document.lists[reading.old_outline - 1U].levels.at(number);
    if (!known.simple) known = level;
    if (known == level) return reading.old_outline;
  }
  List list;
  list.levels.at(number) = level;
  list.counts_on = false;
  reading.old_outline = AddList(reading, list);
  return reading.old_outline;
}

}  // namespace

// The text of a level's marker: its length, then characters, among them the numbers 0 to 8 that
// stand for the number of that level.
void EndLevelText(Reading& reading) {
  std::wstring text = std::exchange(reading.captured, {});
  if (text.ends_with(L';')) text.pop_back();
  if (text.empty() || reading.list.levels == 0 || reading.list.levels > 9) return;
  ListLevel& level = OpenLevel(reading);
  const auto length = static_cast<std::size_t>(static_cast<char32_t>(text.front()));
  text = text.substr(1, length);
  const auto own = static_cast<wchar_t>(reading.list.levels - 1);
  if (level.number_style == 0) {
    level.bullet = text;
    level.simple = text.size() == 1 && text.front() > 8;
  } else {
    level.simple = text == std::wstring{own, L'.'};
  }
}

void EndListOverride(Reading& reading) {
  const auto found = reading.lists_by_id.find(reading.list.id);
  if (found == reading.lists_by_id.end()) return;
  auto& [list, index] = found->second;
  if (std::ranges::find(reading.list.restarts, true) != reading.list.restarts.end()) {
    List restarted = list;
    for (std::size_t level = 0; level < restarted.levels.size(); ++level)
      if (reading.list.restarts.at(level))
        restarted.levels.at(level).start = reading.list.list.levels.at(level).start;
    reading.list_overrides[reading.list.override_number] = AddList(reading, std::move(restarted));
    return;
  }
  // Overrides of one list that change nothing count on together.
  if (index == 0) index = AddList(reading, list);
  reading.list_overrides[reading.list.override_number] = index;
}

void EndOldList(Reading& reading) {
  ListLevel level = std::exchange(reading.old_list.level, {});
  const std::int32_t depth = std::clamp(std::exchange(reading.old_list.depth, 0), 0, 9);
  const std::wstring before = std::exchange(reading.old_list.before, {});
  const std::wstring after = std::exchange(reading.old_list.after, {});
  if (std::exchange(reading.old_list.bullet, false)) {
    level.number_style = 0;
    level.bullet = before;
    level.simple = before.size() == 1;
  } else {
    level.simple = level.number_style != 0 && before.empty() && after == L".";
  }
  if (!level.simple) return;
  const auto list_level = static_cast<std::uint8_t>(std::max(1, depth) - 1);
  reading.state.paragraph.list =
      depth > 0 ? OldOutline(reading, level, list_level) : OldList(reading, level);
  reading.state.paragraph.list_level = list_level;
}

void AddListWords(WordTable& words) {
  const auto add = [&](std::string_view name, void (*apply)(Reading&, const Word&)) {
    words[name] = {apply, false};
  };
  const auto begin = [&](std::string_view name, void (*apply)(Reading&, const Word&)) {
    words[name] = {apply, true};
  };
  begin("listtable", [](Reading& r, const Word&) { r.Begin(Destination::kSkipText); });
  begin("listoverridetable", [](Reading& r, const Word&) { r.Begin(Destination::kSkipText); });
  begin("list", [](Reading& r, const Word&) {
    if (r.state.destination != Destination::kSkipText) return;
    r.Begin(Destination::kList);
    r.list = {};
  });
  begin("listoverride", [](Reading& r, const Word&) {
    if (r.state.destination != Destination::kSkipText) return;
    r.Begin(Destination::kListOverride);
    r.list = {};
  });
  begin("listname", [](Reading& r, const Word&) { r.Begin(Destination::kSkip); });
  add("listlevel", [](Reading& r, const Word&) {
    if (r.state.destination == Destination::kList) ++r.list.levels;
  });
  add("lfolevel", [](Reading& r, const Word&) {
    if (r.state.destination == Destination::kListOverride) ++r.list.levels;
  });
  add("listoverridestartat", [](Reading& r, const Word&) {
    if (r.list.levels > 0 && r.list.levels <= r.list.restarts.size())
      r.list.restarts.at(r.list.levels - 1) = true;
  });
  add("levelnfc",
      [](Reading& r, const Word& w) { OpenLevel(r).number_style = NumberStyle(w.Or(0)); });
  add("levelnfcn",
      [](Reading& r, const Word& w) { OpenLevel(r).number_style = NumberStyle(w.Or(0)); });
  add("levelstartat", [](Reading& r, const Word& w) { OpenLevel(r).start = std::max(0, w.Or(1)); });
  begin("leveltext", [](Reading& r, const Word&) { r.Begin(Destination::kLevelText); });
  begin("levelnumbers", [](Reading& r, const Word&) { r.Begin(Destination::kSkip); });
  add("listid", [](Reading& r, const Word& w) { r.list.id = w.Or(0); });
  add("ls", [](Reading& r, const Word& w) {
    if (r.state.destination == Destination::kListOverride) {
      r.list.override_number = w.Or(0);
      return;
    }
    const auto found = r.list_overrides.find(w.Or(0));
    r.state.paragraph.list = found == r.list_overrides.end() ? std::uint16_t{0} : found->second;
  });
  add("ilvl", [](Reading& r, const Word& w) { r.state.paragraph.list_level = Level(w); });

  begin("listtext", [](Reading& r, const Word&) {
    if (r.InBody()) r.Begin(Destination::kMarker);
  });
  begin("pntext", [](Reading& r, const Word&) {
    if (r.InBody()) r.Begin(Destination::kMarker);
  });
  begin("pn", [](Reading& r, const Word&) {
    r.Begin(Destination::kOldList);
    r.old_list = {};
  });
  begin("pnseclvl", [](Reading& r, const Word&) { r.Begin(Destination::kSkip); });
  begin("pntxtb", [](Reading& r, const Word&) { r.Begin(Destination::kTextBefore); });
  begin("pntxta", [](Reading& r, const Word&) { r.Begin(Destination::kTextAfter); });
  add("pnlvlblt", [](Reading& r, const Word&) { r.old_list.bullet = true; });
  add("pnlvl", [](Reading& r, const Word& w) { r.old_list.depth = w.Or(1); });
  add("pnstart", [](Reading& r, const Word& w) { r.old_list.level.start = std::max(0, w.Or(1)); });
  add("pnf", [](Reading& r, const Word& w) { r.SetFont(w.Or(0)); });
  add("pndec", SetOldStyle<L'1'>);
  add("pnucrm", SetOldStyle<L'I'>);
  add("pnlcrm", SetOldStyle<L'i'>);
  add("pnucltr", SetOldStyle<L'A'>);
  add("pnlcltr", SetOldStyle<L'a'>);
}

}  // namespace pxscheduler
