#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace pxscheduler {

// A domain name in the ASCII form of DNS and SMTP. One that is not ASCII is converted by IDNA (UTS
// #46, nontransitional), which also lowers its letters. Nothing for a text that is not a domain
// name: labels of letters, digits, "-" and "_", 1 to 63 characters long, at most 253 in all.
std::optional<std::string> AsciiDomain(std::wstring_view domain);

}  // namespace pxscheduler
