#include "letters/html/inline_style.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cwchar>
#include <string>
#include <utility>
#include <vector>

#include "text/ascii_case.h"

namespace pxscheduler {
namespace {

std::wstring Simplified(std::wstring_view text) {
  std::wstring simplified;
  for (const wchar_t character : text) {
    const bool blank = character == L' ' || (character >= L'\t' && character <= L'\r');
    if (blank && (simplified.empty() || simplified.back() == L' ')) continue;
    simplified += blank ? L' ' : LowerAscii(character);
  }
  if (simplified.ends_with(L' ')) simplified.pop_back();
  return simplified;
}

std::optional<int> BlankLines(const std::wstring& length) {
  wchar_t* unit = nullptr;
  double points = std::wcstod(length.c_str(), &unit);
  if (unit == length.c_str()) return std::nullopt;
  constexpr std::array<std::pair<std::wstring_view, double>, 6> kUnits = {
      {{L"px", 0.75}, {L"em", 12}, {L"rem", 12}, {L"cm", 28.35}, {L"mm", 2.835}, {L"in", 72}}};
  for (const auto& [name, factor] : kUnits)
    if (name == unit) points *= factor;
  return points < 5 ? 0 : 1;
}

void ReadMargins(const std::wstring& value, InlineStyle& style) {
  std::vector<std::wstring> sides(1);
  for (const wchar_t character : value)
    if (character == L' ')
      sides.emplace_back();
    else
      sides.back() += character;
  style.margin_top = BlankLines(sides[0]);
  style.margin_bottom = sides.size() > 2 ? BlankLines(sides[2]) : style.margin_top;
}

wchar_t ListStyle(const std::wstring& value) {
  constexpr std::array<std::pair<std::wstring_view, wchar_t>, 7> kStyles = {
      {{L"decimal", L'1'},
       {L"lower-alpha", L'a'},
       {L"lower-latin", L'a'},
       {L"upper-alpha", L'A'},
       {L"upper-latin", L'A'},
       {L"lower-roman", L'i'},
       {L"upper-roman", L'I'}}};
  for (const auto& [name, style] : kStyles)
    if (value == name) return style;
  return 0;
}

void ReadDeclaration(const std::wstring& name, const std::wstring& value, InlineStyle& style) {
  if (name == L"display")
    style.hidden = value.starts_with(L"none");
  else if (name == L"text-align")
    style.right_aligned = value.starts_with(L"right");
  else if (name == L"margin")
    ReadMargins(value, style);
  else if (name == L"margin-top")
    style.margin_top = BlankLines(value);
  else if (name == L"margin-bottom")
    style.margin_bottom = BlankLines(value);
  else if (name == L"list-style-type")
    style.list_style = ListStyle(value);
}

}  // namespace

InlineStyle ReadInlineStyle(std::wstring_view text) {
  InlineStyle style;
  while (!text.empty()) {
    const std::wstring_view declaration = text.substr(0, text.find(L';'));
    const std::size_t colon = declaration.find(L':');
    if (colon != std::wstring_view::npos)
      ReadDeclaration(Simplified(declaration.substr(0, colon)),
                      Simplified(declaration.substr(colon + 1)), style);
    text.remove_prefix(std::min(text.size(), declaration.size() + 1));
  }
  return style;
}

}  // namespace pxscheduler
