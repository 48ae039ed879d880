#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace pxscheduler {

// A text with places for values. What stands before, between and behind the places is constant.
struct TextTemplate {
  std::vector<std::wstring> constants{1};  // one more than there are places; each may be empty
  std::vector<std::size_t> places;         // the value that stands in each, 0-based
};

// The text with the values in their places; there must be one for each.
std::wstring Filled(const TextTemplate& text, std::span<const std::wstring> values);

}  // namespace pxscheduler
