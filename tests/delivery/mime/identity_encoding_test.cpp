#include "delivery/mime/identity_encoding.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "tests/delivery/mime/any_text.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

using enum TransferEncoding;

struct Result {
  TransferEncoding needs;
  std::string wire;
};

Result Encoded(const TextTemplate& text, const std::vector<std::wstring>& values) {
  IdentityEncoding encoding;
  encoding.SetTemplate(text);
  ByteBuffer out;
  const TransferEncoding needs = encoding.Append(values, out);
  return {needs, std::string(out.View())};
}

// The text as it stands in the DATA phase.
std::string OnTheWire(const std::wstring& text) {
  std::string wire;
  bool starts = true;
  for (const char byte : Lines(text)) {
    wire += byte == '\n' ? "\r\n" : starts && byte == '.' ? ".." : std::string(1, byte);
    starts = byte == '\n';
  }
  return wire;
}

// Cut into a constant, a value and a constant at each place, and into single characters.
TEST(IdentityEncodingTest, Texts) {
  using namespace std::string_literals;
  const std::wstring longest(900, L'x');
  struct Case {
    std::wstring text;
    TransferEncoding needs;
  };
  const Case cases[] = {
      {L"", kSevenBit},
      {L"plain\ttext, 1 + 1 = 2 \n ", kSevenBit},
      {L"a\r\nb\nc\rd\r\n", kSevenBit},
      {L".\n..\n\n.a.", kSevenBit},
      {L"caf\u00e9 \u20ac", kEightBit},
      {std::wstring(1, static_cast<wchar_t>(0xD800)), kEightBit},
      {L"\u00e9\n", kEightBit},
      {L"nul\0"s, kQuotedPrintable},
      {L"bell\x07\n", kQuotedPrintable},
      {L"\x7F", kQuotedPrintable},
      {longest, kSevenBit},
      {L"." + longest.substr(1) + L"\n" + longest + L"\r\n", kSevenBit},
      {longest + L"x", kQuotedPrintable},
      {longest + L"x\n", kQuotedPrintable},
      {L"\n" + longest + L"x\n", kQuotedPrintable},
      // Bytes count, not characters.
      {longest.substr(2) + L"\u00e9", kEightBit},
      {longest.substr(1) + L"\u00e9", kQuotedPrintable},
      {L"x\n--=_alt_0123\n", kQuotedPrintable},
      {L"--=_", kQuotedPrintable},
      {L"x--=_\n--\n-=_\n--=x\n-- =_\n---=_", kSevenBit},
  };
  for (const Case& test : cases) {
    const auto check = [&](const TextTemplate& text, const std::vector<std::wstring>& values) {
      const Result result = Encoded(text, values);
      ASSERT_EQ(result.needs, test.needs) << ToUtf8(test.text);
      if (test.needs != kQuotedPrintable) ASSERT_EQ(result.wire, OnTheWire(test.text));
    };
    for (std::size_t cut = 0; cut <= test.text.size(); ++cut) {
      const std::size_t rest = std::min(cut + cut % 5, test.text.size());
      check({{test.text.substr(0, cut), test.text.substr(rest)}, {0}},
            {test.text.substr(cut, rest - cut)});
    }
    TextTemplate characters;
    std::vector<std::wstring> values;
    for (std::size_t at = 0; at < test.text.size(); at += 2) {
      characters.constants.back() = test.text.substr(at, 1);
      characters.constants.emplace_back();
      characters.places.push_back(values.size());
      values.push_back(at + 1 < test.text.size() ? test.text.substr(at + 1, 1) : L"");
    }
    check(characters, values);
    ByteBuffer out;
    EXPECT_EQ(IdentityEncoding::AppendText(test.text, out), test.needs);
  }
}

TEST(IdentityEncodingTest, EachMessageComesBack) {
  std::mt19937 random(20261116);
  for (int round = 0; round < 1000; ++round) {
    const TextTemplate text = AnyTemplate(random);
    const std::vector<std::wstring> values = AnyValues(text, random);
    const std::wstring filled = Filled(text, values);
    const Result result = Encoded(text, values);
    ASSERT_EQ(result.wire, OnTheWire(filled));
    ASSERT_EQ(result.needs == kEightBit, ToUtf8(filled).size() != filled.size());
  }
}

}  // namespace
}  // namespace pxscheduler
