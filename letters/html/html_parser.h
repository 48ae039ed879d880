#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace pxscheduler {

// The attributes of one element in the order of the document, names in lower case, entities
// resolved.
using HtmlAttributes = std::vector<std::pair<std::string, std::wstring>>;

// "" where the element has no such attribute.
std::wstring_view AttributeValue(const HtmlAttributes& attributes, std::string_view name);

// The whole number that the value begins with.
long NumberAttribute(const HtmlAttributes& attributes, std::string_view name, long otherwise);

// Receives the elements and the text of a document in its order. Every element that starts also
// ends, and they nest, however broken the document is. Element names are in lower case.
class HtmlHandler {
 public:
  virtual ~HtmlHandler() = default;

  virtual void StartElement(std::string_view name, const HtmlAttributes& attributes) = 0;
  virtual void EndElement(std::string_view name) = 0;
  // Character data with its entities resolved, in parts of any length. Scripts and style sheets
  // are left out.
  virtual void Text(const std::wstring& text) = 0;
};

// Reads an HTML document as browsers do: nothing in it is an error.
void ParseHtml(std::wstring_view html, HtmlHandler& handler);

}  // namespace pxscheduler
