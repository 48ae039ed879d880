#include "letters/html/tab_line_writer.h"

#include <string_view>

#include "letters/html/css.h"
#include "letters/html/run_writer.h"

namespace pxscheduler {
namespace {

std::string_view LeaderLine(TabLeader leader) {
  switch (leader) {
    case TabLeader::kDots:
      return "1pt dotted #000000";
    case TabLeader::kHyphens:
      return "1pt dashed #000000";
    case TabLeader::kThickLine:
      return "2pt solid #000000";
    case TabLeader::kDoubleLine:
      return "3pt double #000000";
    case TabLeader::kLine:
    case TabLeader::kNone:
      break;
  }
  return "1pt solid #000000";
}

class TabLineWriter {
 public:
  TabLineWriter(const Document& document, const std::set<std::wstring>& linked_places,
                const CharacterFormat& around, std::string& html)
      : document_(document), linked_places_(linked_places), around_(around), html_(html) {}

  // `indent` is that of the line in the element around it, in twips.
  void WriteTable(const ParagraphFormat& format, const TabLine& line, std::int32_t indent) {
    Css table;
    table.Add("margin", FourSides(0, 0, 0, indent));
    table.Add("border-collapse", "collapse");
    if (line.width > 0) table.Add("width", Points(line.width));
    // Not every mail program hands the font around down to a table.
    CharacterFormat nothing;
    nothing.half_points = 0;
    AddFont(document_, around_, nothing, table);
    html_ += R"(<table cellspacing="0" cellpadding="0" border="0")" + table.Attribute() +
             "><tr valign=\"bottom\">";
    for (const TabCell& cell : line.cells) {
      Css css;
      if (cell.takes_rest)
        css.Add("width", "100%");
      else if (cell.width > 0)
        css.Add("width", Points(cell.width));
      if (cell.leader != TabLeader::kNone) css.Add("border-bottom", LeaderLine(cell.leader));
      if (cell.alignment == Alignment::kCentre) css.Add("text-align", "center");
      if (cell.alignment == Alignment::kRight) css.Add("text-align", "right");
      const bool goes_on = line.width == 0 && &cell == &line.cells.back();
      if (!cell.runs.empty() && !goes_on && (cell.width == 0 || cell.alignment != Alignment::kLeft))
        css.Add("white-space", "nowrap");
      html_ += "<td" + css.Attribute() + ">";
      WriteOrBlank(format, cell.runs);
      html_ += "</td>";
    }
    html_ += "</tr></table>";
  }

  void WriteText(const ParagraphFormat& format, const TabLine& line, std::int32_t indent) {
    Css css;
    css.Add("margin", FourSides(0, 0, 0, indent));
    html_ += "<div" + css.Attribute() + ">";
    WriteOrBlank(format, line.runs);
    html_ += "</div>";
  }

 private:
  void WriteOrBlank(const ParagraphFormat& format, const std::vector<Run>& runs) {
    const std::size_t empty = html_.size();
    WriteRuns(document_, linked_places_, format, runs, around_, html_);
    if (html_.size() == empty) html_ += "&nbsp;";
  }

  const Document& document_;
  const std::set<std::wstring>& linked_places_;
  const CharacterFormat& around_;
  std::string& html_;
};

}  // namespace

void WriteTabLines(const Document& document, const std::set<std::wstring>& linked_places,
                   const ParagraphFormat& format, const std::vector<TabLine>& lines,
                   std::int32_t left, const CharacterFormat& around, std::string& html) {
  TabLineWriter writer(document, linked_places, around, html);
  ParagraphFormat line_format = format;
  for (const TabLine& line : lines) {
    line_format.first_indent = line.left - format.left_indent;
    if (line.cells.empty())
      writer.WriteText(line_format, line, line.left - left);
    else
      writer.WriteTable(line_format, line, line.left - left);
  }
}

}  // namespace pxscheduler
