#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace pxscheduler {

// A domain name in the form that DNS and SMTP know: what is not ASCII by IDNA (UTS #46,
// nontransitional), letters in lower case only where a label had to be converted. Nothing where the
// text is no domain name: labels of letters, digits, "-" and "_", 1 to 63 long, at most 253 in all.
std::optional<std::string> AsciiDomain(std::wstring_view domain);

}  // namespace pxscheduler
