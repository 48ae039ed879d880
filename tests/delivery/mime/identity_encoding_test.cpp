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

Result Encoded(const TextPieces& text, IdentityEncoding& encoding) {
  ByteBuffer out;
  const TransferEncoding needs = encoding.Append(text, out);
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

// Every second piece is constant.
TextPieces Cut(std::wstring_view text, bool is_first_constant, std::size_t first_size,
               std::size_t other_size) {
  TextPieces pieces = {{text.substr(0, first_size), is_first_constant}};
  text.remove_prefix(pieces.front().text.size());
  while (!text.empty()) {
    pieces.push_back({text.substr(0, other_size), !pieces.back().is_constant});
    text.remove_prefix(pieces.back().text.size());
  }
  return pieces;
}

// Cut in two at each place, and into single characters.
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
    std::vector<TextPieces> forms;
    for (const bool is_first_constant : {false, true}) {
      forms.push_back(Cut(test.text, is_first_constant, 1, 1));
      for (std::size_t size = 0; size <= test.text.size(); ++size)
        forms.push_back(Cut(test.text, is_first_constant, size, test.text.size()));
    }
    const std::string wire = OnTheWire(test.text);
    for (const TextPieces& pieces : forms) {
      IdentityEncoding encoding;
      for (int message = 0; message < 2; ++message) {
        const Result result = Encoded(pieces, encoding);
        ASSERT_EQ(result.needs, test.needs) << ToUtf8(test.text);
        if (test.needs != kQuotedPrintable) ASSERT_EQ(result.wire, wire);
      }
    }
  }
}

TEST(IdentityEncodingTest, PiecesComeBackFromEachMessage) {
  std::mt19937 random(20261116);
  for (int round = 0; round < 300; ++round) {
    IdentityEncoding encoding;
    AnyRun run(random);
    for (int message = 0; message < 5; ++message) {
      const TextPieces pieces = run.NextMessage();
      const std::wstring text = Joined(pieces);
      const Result result = Encoded(pieces, encoding);
      ASSERT_EQ(result.wire, OnTheWire(text));
      ASSERT_EQ(result.needs == kEightBit, ToUtf8(text).size() != text.size());
    }
  }
}

}  // namespace
}  // namespace pxscheduler
