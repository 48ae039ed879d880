#pragma once

#include <initializer_list>
#include <string_view>

namespace pxscheduler {

// How the elements of HTML are rendered. Names are in lower case.

// Whether it is one of these.
bool IsElement(std::string_view name, std::initializer_list<std::string_view> names);
bool IsHeading(std::string_view name);
// Whether its content is not shown.
bool IsUnseen(std::string_view name);
bool IsBlock(std::string_view name);
// Blocks that stand apart from their neighbours unless their style says otherwise.
bool StandsApart(std::string_view name);

}  // namespace pxscheduler
