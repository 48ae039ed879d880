#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace pxscheduler {

// A mailbox (RFC 5321 section 4.1.2), without a display name.
struct Address {
  std::string text;      // local part, "@" and domain; UTF-8 where the local part is not ASCII
  std::string domain;    // in its ASCII form, or an address literal with its brackets
  bool is_ascii = true;  // false: only a server with SMTPUTF8 (RFC 6531) accepts it

  friend bool operator==(const Address&, const Address&) = default;
};

// Reads a mailbox and ignores blanks around it. Quotes a local part with misplaced dots, which some
// providers allow. Returns nothing for a text that is not exactly one mailbox: two addresses, a
// display name, a control, invisible or direction character, no local part or no domain.
std::optional<Address> ParseAddress(std::wstring_view text);

}  // namespace pxscheduler
