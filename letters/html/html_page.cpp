#include "letters/html/html_page.h"

#include "letters/html/css.h"

namespace pxscheduler {

std::string PageRule(const PageLayout& page) {
  return "@page{size:" + Points(page.width) + " " + Points(page.height) + ";margin:" +
         FourSides(page.top_margin, page.right_margin, page.bottom_margin, page.left_margin) + "}";
}

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

}  // namespace pxscheduler
