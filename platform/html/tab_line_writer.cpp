#include "platform/html/tab_line_writer.h"

#include <string_view>

#include "platform/html/css.h"
#include "platform/html/inline_writer.h"

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

}  // namespace

void WriteTabLine(const Document& document, const std::set<std::wstring>& linked_places,
                  const Paragraph& paragraph, const TabLine& line, const CharacterFormat& around,
                  std::string& html) {
  Css table;
  table.Add("margin", "0");
  table.Add("border-collapse", "collapse");
  if (line.width > 0) table.Add("width", Points(line.width));
  // Not every mail program hands the font around down to a table.
  CharacterFormat nothing = around;
  nothing.font = 0;
  nothing.half_points = 0;
  AddFont(document, around, nothing, table);
  html += R"(<table cellspacing="0" cellpadding="0" border="0")" + table.Attribute() +
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
    html += "<td" + css.Attribute() + ">";
    const std::size_t empty = html.size();
    WriteRuns(document, linked_places, document.paragraph_formats[paragraph.format], cell.runs,
              around, html);
    if (html.size() == empty) html += "&nbsp;";
    html += "</td>";
  }
  html += "</tr></table>";
}

}  // namespace pxscheduler
