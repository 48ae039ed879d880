#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace pxscheduler {

// One mailbox as RFC 5321 and RFC 5322 write it, without a display name.
struct Address {
  std::string text;      // local part, "@" and domain; UTF-8 where the local part is not ASCII
  std::string domain;    // in its ASCII form, or an address literal with its brackets
  bool is_ascii = true;  // false: only a server with SMTPUTF8 (RFC 6531) can take it

  friend bool operator==(const Address&, const Address&) = default;
};

// Reads a mailbox; blanks around it do not count. A local part with misplaced dots, which some
// providers hand out, is written as a quoted string. Nothing for a text that is not exactly one
// mailbox: a control character, two addresses, a display name, no local part or domain.
std::optional<Address> ParseAddress(std::wstring_view text);

}  // namespace pxscheduler
