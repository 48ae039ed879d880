#include "delivery/mime/header_text.h"

#include <gtest/gtest.h>

#include <string>

namespace pxscheduler {
namespace {

TEST(HeaderTextTest, Subjects) {
  struct Case {
    std::wstring text;
    std::string written;
  };
  const std::wstring words =
      L"A subject of so many words that it cannot stand on one line of a message";
  const Case cases[] = {
      {L"  Happy birthday, Ann!  ", "Happy birthday, Ann!"},
      {words, "A subject of so many words that it cannot stand on one line of a\r\n message"},
      {L"\u00dcber uns", "=?utf-8?Q?=C3=9Cber_uns?="},
      {L"\u65e5\u672c\u8a9e", "=?utf-8?B?5pel5pys6Kqe?="},
      {std::wstring(100, L'x'),
       "=?utf-8?Q?" + std::string(55, 'x') + "?=\r\n =?utf-8?Q?" + std::string(45, 'x') + "?="},
  };
  for (const Case& test : cases) {
    ByteBuffer out;
    AppendUnstructured(test.text, 9, out);
    EXPECT_EQ(out.View(), test.written);
  }
}

TEST(HeaderTextTest, NamesBesideTheirAddresses) {
  struct Case {
    std::wstring name;
    std::string written;
  };
  const Case cases[] = {
      {L"Ann Smith", "Ann Smith <a@b.example>"},
      {L"Smith, Ann \"the \\first\"", R"("Smith, Ann \"the \\first\"" <a@b.example>)"},
      {L"Ann  Smith", "\"Ann  Smith\" <a@b.example>"},
      {L"Ren\u00e9 \"R\"", "=?utf-8?Q?Ren=C3=A9_=22R=22?= <a@b.example>"},
  };
  for (const Case& test : cases) {
    ByteBuffer out;
    AppendMailbox(test.name, "a@b.example", 4, out);
    EXPECT_EQ(out.View(), test.written);
  }
}

}  // namespace
}  // namespace pxscheduler
