#include "letters/html/tab_line.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <string_view>
#include <utility>

#include "letters/html/text_width.h"

namespace pxscheduler {
namespace {

constexpr std::int64_t kLeastGap = 60;  // twips

// What stands before the first tab, between two, or after the last.
struct Segment {
  std::vector<Run> runs;
  std::int64_t width = 0;     // twips, roughly
  std::int64_t fraction = 0;  // of it: what stands from the decimal point on

  bool Empty() const { return width == 0; }
};

// `text` is that of the run, empty for a picture or a bookmark.
void AddRun(const Document& document, const Run& run, std::wstring_view text, Segment& segment) {
  segment.runs.push_back(run);
  if (run.kind == Run::Kind::kPicture)
    segment.width += std::max(15, document.pictures[run.begin].width);
  if (run.kind != Run::Kind::kText) return;
  const std::uint16_t half_points = document.character_formats[run.format].half_points;
  const std::int64_t width = RoughWidth(text, half_points);
  segment.width += width;
  const std::size_t point = text.find_last_of(L".,");
  if (segment.fraction > 0)
    segment.fraction += width;
  else if (point != std::wstring_view::npos)
    segment.fraction = RoughWidth(text.substr(point), half_points);
}

// Calls `add` with each part of a run between separators and its text, and `separate` for each
// separator.
template <typename Add, typename Separate>
void SplitRuns(const Document& document, std::span<const Run> runs, wchar_t separator, Add add,
               Separate separate) {
  for (Run run : runs) {
    if (run.kind != Run::Kind::kText) {
      add(run, std::wstring_view());
      continue;
    }
    std::wstring_view text = std::wstring_view(document.text).substr(run.begin, run.length);
    for (;;) {
      const std::size_t end = std::min(text.find(separator), text.size());
      run.length = static_cast<std::uint32_t>(end);
      if (end > 0) add(run, text.substr(0, end));
      if (end == text.size()) break;
      separate();
      run.begin += run.length + 1;
      text.remove_prefix(end + 1);
    }
  }
}

std::vector<Segment> SplitAtTabs(const Document& document, std::span<const Run> runs) {
  std::vector<Segment> segments(1);
  SplitRuns(
      document, runs, L'\t',
      [&](const Run& run, std::wstring_view text) { AddRun(document, run, text, segments.back()); },
      [&] { segments.emplace_back(); });
  return segments;
}

std::vector<std::vector<Run>> SplitAtLineBreaks(const Document& document,
                                                const Paragraph& paragraph) {
  std::vector<std::vector<Run>> lines(1);
  SplitRuns(
      document, std::span(document.runs).subspan(paragraph.first_run, paragraph.run_count), L'\n',
      [&](const Run& run, std::wstring_view) { lines.back().push_back(run); },
      [&] { lines.emplace_back(); });
  return lines;
}

bool IsPlain(const TabStop& stop) {
  return stop.kind == TabKind::kLeft && stop.leader == TabLeader::kNone;
}

bool MayHaveCells(const ParagraphFormat& format) {
  const auto* end = format.tabs.stops.begin() + format.tabs.count;
  return !std::all_of(format.tabs.stops.begin(), end, IsPlain) && format.list == 0 &&
         !format.right_to_left && format.alignment != Alignment::kCentre &&
         format.alignment != Alignment::kRight;
}

// Puts segments one after another.
class LineBuilder {
 public:
  LineBuilder(std::int64_t left, Segment first) : left_(left), at_(left) { Push(std::move(first)); }

  // `next_stop` is where the segment after it is set to.
  void Add(const TabStop& stop, Segment segment, std::int64_t next_stop) {
    const std::int64_t position = stop.position;
    const std::int64_t width = segment.width;
    switch (stop.kind) {
      case TabKind::kLeft:
        Reach(position, stop.leader, 0);
        Push(std::move(segment));
        at_ = position;
        break;
      case TabKind::kCentre: {
        const std::int64_t before =
            ends_open_ && open_width_ > 0 ? (position - at_) / 2 : position - at_;
        const std::int64_t half = std::max(width / 2, std::min(before, (next_stop - position) / 2));
        Reach(position - half, stop.leader, 0);
        Push(std::move(segment), Alignment::kCentre, 2 * half);
        End(position + half);
        break;
      }
      case TabKind::kRight:
      case TabKind::kDecimal: {
        const std::int64_t end = position + (stop.kind == TabKind::kDecimal ? segment.fraction : 0);
        const bool alone = !(ends_open_ && open_width_ > 0) && stop.leader == TabLeader::kNone;
        if (alone) {
          if (ends_open_) line_.cells.pop_back();
          Push(std::move(segment), Alignment::kRight, end - at_);
        } else {
          Reach(end, stop.leader, width);
          Push(std::move(segment), Alignment::kRight);
        }
        End(end);
        break;
      }
    }
  }

  TabLine Finish() {
    if (ends_open_ && open_width_ == 0 && line_.cells.size() > 1) {
      line_.cells.pop_back();
      ends_open_ = false;
    }
    // One gap may take the rest where no other cell has a width that it could take too.
    const auto gaps = std::ranges::count_if(line_.cells, &TabCell::takes_rest);
    const auto others = std::ranges::count_if(
        line_.cells, [](const TabCell& cell) { return cell.width > 0 && !cell.takes_rest; });
    const bool flexible = gaps == 1 && others == 0 && !ends_open_;
    for (TabCell& cell : line_.cells)
      if (!flexible) cell.takes_rest = false;
    line_.left = static_cast<std::int32_t>(left_);
    if (!ends_open_) line_.width = static_cast<std::int32_t>(at_ - left_);
    return std::move(line_);
  }

 private:
  void Push(Segment segment, Alignment alignment = Alignment::kLeft, std::int64_t width = 0) {
    open_width_ = segment.width;
    ends_open_ = true;
    TabCell cell;
    cell.runs = std::move(segment.runs);
    cell.alignment = alignment;
    cell.width = static_cast<std::int32_t>(width);
    line_.cells.push_back(std::move(cell));
  }

  void End(std::int64_t position) {
    ends_open_ = false;
    at_ = position;
  }

  // Fills the line up to a position, before which `reserved` twips are left for what comes next.
  void Reach(std::int64_t position, TabLeader leader, std::int64_t reserved) {
    const bool text_before = ends_open_ && open_width_ > 0;
    if (ends_open_ && leader == TabLeader::kNone && reserved == 0 &&
        (text_before || position > at_)) {
      line_.cells.back().width = static_cast<std::int32_t>(std::max(kLeastGap, position - at_));
      return;
    }
    if (ends_open_ && !text_before) line_.cells.pop_back();
    const std::int64_t gap = position - at_ - reserved - (text_before ? open_width_ : 0);
    if (gap <= 0 && !text_before && leader == TabLeader::kNone) return;
    TabCell cell;
    cell.width = static_cast<std::int32_t>(std::max(kLeastGap, gap));
    cell.leader = leader;
    cell.takes_rest = text_before || reserved > 0;
    line_.cells.push_back(std::move(cell));
  }

  TabLine line_;
  std::int64_t left_;
  std::int64_t at_;              // where the last cell ends, or begins where it ends open
  bool ends_open_ = true;        // the last cell's end is not known yet
  std::int64_t open_width_ = 0;  // of the last cell's text
};

// Without cells where blanks are enough.
TabLine LayOutLine(const Document& document, const ParagraphFormat& format, std::int64_t left,
                   std::vector<Run> runs) {
  std::vector<Segment> segments = SplitAtTabs(document, runs);
  std::vector<TabStop> stops;
  std::int64_t position = left + segments.front().width;
  for (std::size_t i = 1; i < segments.size(); ++i) {
    stops.push_back(NextTabStop(document, format, position));
    const std::int64_t width = segments[i].width;
    position = stops.back().position + (stops.back().kind == TabKind::kLeft     ? width
                                        : stops.back().kind == TabKind::kCentre ? width / 2
                                                                                : 0);
  }
  if (std::ranges::all_of(stops, IsPlain))
    return {static_cast<std::int32_t>(left), {}, 0, std::move(runs)};
  LineBuilder line(left, std::move(segments.front()));
  for (std::size_t i = 0; i < stops.size(); ++i) {
    const std::int64_t next =
        i + 1 < stops.size() ? stops[i + 1].position : std::int64_t{stops[i].position} * 2;
    line.Add(stops[i], std::move(segments[i + 1]), next);
  }
  return line.Finish();
}

}  // namespace

TabStop NextTabStop(const Document& document, const ParagraphFormat& format,
                    std::int64_t position) {
  const auto* end = format.tabs.stops.begin() + format.tabs.count;
  const auto* next = std::find_if(format.tabs.stops.begin(), end, [&](const TabStop& stop) {
    return std::int64_t{stop.position} > position;
  });
  if (next != end) return *next;
  const std::int64_t before = position < 0 ? -1 : position / document.default_tab;
  TabStop stop;
  stop.position = static_cast<std::int32_t>((before + 1) * document.default_tab);
  return stop;
}

std::vector<TabLine> LayOutTabs(const Document& document, const Paragraph& paragraph) {
  const ParagraphFormat& format = document.paragraph_formats[paragraph.format];
  if (!MayHaveCells(format)) return {};
  std::vector<TabLine> lines;
  std::int64_t left = std::int64_t{format.left_indent} + format.first_indent;
  for (std::vector<Run>& runs : SplitAtLineBreaks(document, paragraph)) {
    lines.push_back(LayOutLine(document, format, left, std::move(runs)));
    left = format.left_indent;
  }
  if (std::ranges::all_of(lines, [](const TabLine& line) { return line.cells.empty(); })) return {};
  return lines;
}

}  // namespace pxscheduler
