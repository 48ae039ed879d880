#include "letters/html/html_page.h"

#include <cstddef>

#include "letters/html/css.h"
#include "text/ascii_case.h"

namespace pxscheduler {
namespace {

// The rule that prints the page as the word processor would.
std::string PageRule(const PageLayout& page) {
  return "@page{size:" + Points(page.width) + " " + Points(page.height) + ";margin:" +
         FourSides(page.top_margin, page.right_margin, page.bottom_margin, page.left_margin) + "}";
}

}  // namespace

std::string HtmlStart(const PageLayout& page, const std::string& body_style) {
  // On paper the margins are the page's, not the body's.
  std::string html =
      "<!DOCTYPE html>\n<html><head>\n"
      "<meta http-equiv=\"Content-Type\" content=\"text/html; charset=utf-8\">\n"
      "<style>" +
      PageRule(page) +
      "@media print{body{width:auto!important;padding:0!important}}</style>\n"
      "</head>\n";
  Css css;
  css.Add("margin", "0");
  css.Add("box-sizing", "border-box");
  css.Add("width", Points(page.width));
  css.Add("max-width", "100%");
  css.Add("padding",
          FourSides(page.top_margin, page.right_margin, page.bottom_margin, page.left_margin));
  std::string body = "<body" + css.Attribute();
  if (!body_style.empty()) body.insert(body.size() - 1, ";" + body_style);
  return html + body + ">\n";
}

std::string HtmlEnd() { return "</body></html>\n"; }

std::string WithPageRule(const std::string& html, const PageLayout& page) {
  const std::string style = "<style>" + PageRule(page) + "</style>";
  const std::string lower = LowerAscii(html);
  if (lower.find("<html") == std::string::npos || lower.find("</html>") == std::string::npos)
    return "<html><head>" + style + "</head><body>\n" + html + "\n</body></html>\n";
  const std::size_t head_end = lower.find("</head>");
  if (head_end == std::string::npos || lower.find("@page") != std::string::npos) return html;
  return std::string(html).insert(head_end, style + "\n");
}

}  // namespace pxscheduler
