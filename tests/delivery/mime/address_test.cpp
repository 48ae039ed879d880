#include "delivery/mime/address.h"

#include <gtest/gtest.h>

#include "text/utf8.h"

namespace pxscheduler {
namespace {

TEST(AddressTest, MailboxesInTheirCanonicalForm) {
  struct Case {
    const wchar_t* text;
    const char* address;
    const char* domain;
    bool is_ascii;
  };
  constexpr Case kCases[] = {
      {L"ann@example.com", "ann@example.com", "example.com", true},
      {L"  Ann.O'Neil+news@Example.COM ", "Ann.O'Neil+news@Example.COM", "Example.COM", true},
      {L"root@localhost", "root@localhost", "localhost", true},
      {L"ann@[192.0.2.1]", "ann@[192.0.2.1]", "[192.0.2.1]", true},
      {L"ann@[IPv6:2001:db8::1]", "ann@[IPv6:2001:db8::1]", "[IPv6:2001:db8::1]", true},
      {L"\"ann, the \\\"first\\\"\"@example.com", "\"ann, the \\\"first\\\"\"@example.com",
       "example.com", true},
      {L"\"a@b\"@example.com", "\"a@b\"@example.com", "example.com", true},
      {L".ann.@example.com", "\".ann.\"@example.com", "example.com", true},
      {L"ann@B\u00dcCHER.example", "ann@xn--bcher-kva.example", "xn--bcher-kva.example", true},
      {L"\u7528\u6237@example.com", "\xE7\x94\xA8\xE6\x88\xB7@example.com", "example.com", false},
  };
  for (const Case& test : kCases) {
    const std::optional<Address> address = ParseAddress(test.text);
    ASSERT_TRUE(address) << ToUtf8(test.text);
    EXPECT_EQ(address->text, test.address);
    EXPECT_EQ(address->domain, test.domain);
    EXPECT_EQ(address->is_ascii, test.is_ascii);
  }
}

TEST(AddressTest, WhatIsNotOneMailbox) {
  using namespace std::string_literals;
  for (const wchar_t* text :
       {L"", L" ", L"@", L"ann", L"ann@", L"ann@[]", L"ann@.com", L"@example.com", L"ann@[1.2.3.4",
        L"ann@[1.2.3.4>]", L"ann@exa mple.com", L"ann smith@example.com", L"a\tb@example.com",
        L"ann@example..com", L"ann@example.com.", L"ann@-example.com", L"ann@exa_mple-.com"})
    EXPECT_FALSE(ParseAddress(text)) << ToUtf8(text);
  for (const wchar_t* text : {L"ann@b@example.com",        L"<ann@example.com>",
                              L"ann(x)@example.com",       L"a\\b@example.com",
                              L"\"a\"b\"@example.com",     L"\"a\\\"@example.com",
                              L"\"\r\n\"@example.com",     L"ann@example.com\r",
                              L"ann\u0085@example.com",    L"ann\u2028@example.com",
                              L"ann@\u2028.example",       L"a\u202Eb@example.com",
                              L"ann@example.com> SIZE=1",  L"a\u00ADb@example.com",
                              L"ann@exam\u00ADple.com",    L"ann@exam\u200Bple.com",
                              L"a\u2067b@example.com",     L"a\u061Cb@example.com",
                              L"\"a\u2060b\"@example.com", L"ann@example.com;bob@example.com"})
    EXPECT_FALSE(ParseAddress(text)) << ToUtf8(text);
  for (const std::wstring& text :
       {L"ann\0@example.com"s, L"ann@exa\0mple.com"s, std::wstring(200, L'a') + L"@example.com",
        L"ann@" + std::wstring(64, L'a') + L".com"})
    EXPECT_FALSE(ParseAddress(text)) << ToUtf8(text);
}

}  // namespace
}  // namespace pxscheduler
