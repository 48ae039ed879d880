#include "letters/html/html_elements.h"

#include <algorithm>

namespace pxscheduler {

bool IsElement(std::string_view name, std::initializer_list<std::string_view> names) {
  return std::ranges::find(names, name) != names.end();
}

bool IsHeading(std::string_view name) {
  return name.size() == 2 && name[0] == 'h' && name[1] >= '1' && name[1] <= '6';
}

bool IsUnseen(std::string_view name) {
  return IsElement(name, {"head", "title", "script", "style", "template", "noframes", "object",
                          "select", "textarea", "map"});
}

bool IsBlock(std::string_view name) {
  return IsHeading(name) ||
         IsElement(name,
                   {"address", "article", "aside",   "blockquote", "body", "center", "dd",
                    "div",     "dl",      "dt",      "fieldset",   "form", "footer", "header",
                    "hr",      "li",      "main",    "nav",        "ol",   "p",      "pre",
                    "section", "table",   "caption", "ul",         "html", "figure", "figcaption"});
}

bool StandsApart(std::string_view name) {
  return IsHeading(name) ||
         IsElement(name, {"p", "ul", "ol", "dl", "blockquote", "pre", "hr", "table", "figure"});
}

}  // namespace pxscheduler
