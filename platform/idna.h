#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace pxscheduler {

// The ASCII form of an internationalized domain name (UTS #46, nontransitional), by what the
// machine has for it. Nothing where a label is not allowed.
std::optional<std::string> IdnaToAscii(std::wstring_view domain);

}  // namespace pxscheduler
