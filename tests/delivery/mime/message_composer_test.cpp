#include "delivery/mime/message_composer.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/child_process.h"
#include "tests/support/scratch_folder.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

using namespace std::chrono_literals;

struct Kind {
  std::wstring subject;
  std::wstring name;
  std::wstring body;
  std::wstring html{};  // "" for a plain message
  std::wstring address = L"ann@example.com";
  std::wstring unsubscribe{};
  std::vector<LetterPicture> pictures{};
};

// What a parser is to find, where that differs from what was given.
std::wstring Blanked(std::wstring text) {
  for (wchar_t& unit : text)
    if (unit < L' ' || unit == 0x7F) unit = L' ';
  const std::size_t first = text.find_first_not_of(L' ');
  return first == std::wstring::npos ? L""
                                     : text.substr(first, text.find_last_not_of(L' ') - first + 1);
}

std::string Hexadecimal(const std::string& bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const char byte : bytes) {
    text += kDigits[static_cast<unsigned char>(byte) >> 4];
    text += kDigits[static_cast<unsigned char>(byte) & 0xF];
  }
  return text;
}

std::string Json(const std::wstring& text) {
  std::string json = "\"";
  for (const char byte : ToUtf8(text)) {
    const bool is_escaped = byte == '"' || byte == '\\' || (byte >= 0 && byte < ' ');
    json += is_escaped ? "\\u00" + Hexadecimal({byte}) : std::string{byte};
  }
  return json + '"';
}

std::string Unstuffed(std::string_view wire) {
  EXPECT_TRUE(wire.ends_with("\r\n.\r\n"));
  std::string message(wire.substr(0, wire.size() - 3));
  EXPECT_EQ(message.find("\r\n.\r\n"), std::string::npos);
  for (std::size_t i = 0; (i = message.find("\r\n..", i)) != std::string::npos; i += 3)
    message.erase(i + 2, 1);
  return message;
}

// The text with its middle third, or nothing where it is short, as the value of a place.
TextTemplate WithPlace(const std::wstring& text, std::size_t value,
                       std::vector<std::wstring>& values) {
  const std::size_t third = text.size() / 3;
  values[value] = text.substr(third, third);
  return {{text.substr(0, third), text.substr(2 * third)}, {value}};
}

void Compose(const Kind& kind, bool is_eight_bit_allowed, WireMessage& message) {
  MessageComposer composer("0123456789abcdef0123456789abcdef");
  composer.SetSender(*ParseAddress(L"news@agency.example"));
  composer.SetUnsubscribe(UnsubscribeAddress(kind.unsubscribe));
  composer.SetHtml(!kind.html.empty());
  composer.SetPictures(kind.pictures);
  composer.SetEightBit(is_eight_bit_allowed);
  std::vector<std::wstring> values(3);
  composer.SetTemplate({.subject = WithPlace(kind.subject, 0, values),
                        .body = WithPlace(kind.html.empty() ? kind.body : kind.html, 1, values),
                        .alternative_body = WithPlace(kind.body, 2, values)});
  composer.Compose({.recipient = {kind.name, *ParseAddress(kind.address)},
                    .date = {.local = {.date = std::chrono::sys_days(2026y / 11 / 16),
                                       .time_of_day = 15h + 7min + 41s},
                             .utc_offset = -210min},
                    .message_id = "00112233445566778899aabbccddeeff",
                    .values = values},
                   message);
}

WireMessage Composed(const Kind& kind) {
  WireMessage message;
  Compose(kind, true, message);
  return message;
}

std::string Expectation(const Kind& kind) {
  std::string pictures;
  for (const LetterPicture& picture : kind.pictures) {
    pictures += std::string(pictures.empty() ? "" : ", ") + "[\"<" + picture.content_id +
                ">\", \"" + picture.media_type + "\", \"" + Hexadecimal(picture.bytes) + "\"]";
  }
  return "{\"subject\": " + Json(Blanked(kind.subject)) +
         ", \"name\": " + Json(Blanked(kind.name)) + ", \"address\": " + Json(kind.address) +
         ", \"plain\": " + Json(kind.body) +
         ", \"html\": " + (kind.html.empty() ? "null" : Json(kind.html)) + ", \"pictures\": [" +
         pictures + "]}";
}

std::vector<Kind> Kinds() {
  const std::wstring html =
      L"<html><body style=\"color: red\">\n.dot\n<p>Gr\u00fc\u00dfe</p></body></html>";
  std::wstring words = L"many words, ";
  for (int i = 0; i < 300; ++i) words += L"word" + std::to_wstring(i) + L" ";
  const std::vector<std::wstring> texts = {
      L"",
      L" \t ",
      L"News",
      L"Smith, Ann (\"the first\") <x@y> \\",
      L"Ren\u00e9e O'Neil",
      (L"\u0416\u0435\u043d\u044f \u65e5\u672c\u8a9e \U0001F600 and some more words for a second "
       L"line"),
      L"one\r\nBcc: everybody@example.com\r\n\r\nbody",
      L"=?utf-8?Q?no_encoded_word?= =?",
      std::wstring(5000, L'n'),
      std::wstring(1500, L'\u00fc'),
      words + L"end",
  };
  std::vector<Kind> kinds;
  for (const std::wstring& text : texts) {
    kinds.push_back({.subject = text, .name = L"Ann", .body = text});
    kinds.push_back({.subject = L"News", .name = text, .body = L"Hello", .html = html});
  }
  kinds.push_back({.subject = L"News",
                   .name = L"Ann",
                   .body = L".\n..\n--=_alt_0123456789abcdef0123456789abcdef\nFrom x\n\n",
                   .html = html + std::wstring(3000, L'\u20ac') + std::wstring(3000, L'x')});
  kinds.push_back(
      {.subject = L"News",
       .name = L"Ann",
       .body = L"See picture",
       .html = html,
       .unsubscribe = L"https://agency.example/unsubscribe?list=1",
       .pictures = {{"a1@agency.example", "image/png", std::string("\0\r\n.\r\n\xFF", 7)},
                    {"a2@agency.example", "image/gif", std::string(500, 'g')}}});
  kinds.push_back({.subject = L"News", .name = L"Ann", .body = L"caf\u00e9"});
  kinds.push_back({.subject = L"News", .name = L"Ann", .body = L"\u20ac", .html = L"<p>\u00fc"});
  kinds.push_back({.subject = L"News",
                   .name = std::wstring(70, L'n'),
                   .body = L"Hello",
                   .address = std::wstring(60, L'a') + L"@example.com",
                   .unsubscribe = L"mailto:stop@agency.example"});
  return kinds;
}

bool IsAscii(std::string_view bytes) {
  return std::all_of(bytes.begin(), bytes.end(), [](char byte) { return byte >= 0; });
}

// As it is composed, and for a server without 8BITMIME.
TEST(MessageComposerTest, StrictParsersFindWhatWasGiven) {
  const ScratchFolder folder;
  int number = 100;
  for (const Kind& kind : Kinds()) {
    const std::string name = folder.Path(std::to_string(number++));
    const auto write = [&](const std::string& form, const WireMessage& message) {
      const std::string file = name + form;
      std::ofstream(file + ".eml", std::ios::binary) << Unstuffed(message.bytes.View());
      std::ofstream(file + ".json", std::ios::binary) << Expectation(kind);
      EXPECT_EQ(message.eight_bit_parts.empty(), IsAscii(message.bytes.View())) << file;
    };
    WireMessage message = Composed(kind);
    write("composed", message);
    MakeSevenBit(message);
    EXPECT_TRUE(IsAscii(message.bytes.View()));
    write("seven_bit", message);
  }
  const std::string scripts = HostPath(TESTS_FOLDER "/delivery/mime");
  for (const auto& [program, script] : {std::pair("/usr/bin/python3", "/parse_strictly.py"),
                                        {"/usr/bin/perl", "/parse_strictly.pl"}}) {
    const std::string report = folder.Path("report");
    ChildProcess parser({program, scripts + script, HostPath(folder.Path())}, report);
    EXPECT_EQ(parser.Wait(), 0) << program << ReadWholeFile(report);
  }
}

// What goes out in each part's form.
TEST(MessageComposerTest, EncodingsOfTheParts) {
  const std::wstring long_line(999, L'x');
  struct Case {
    std::wstring plain;
    std::wstring html;
    std::vector<std::string> composed;
    std::vector<std::string> seven_bit;
    std::vector<LetterPicture> pictures{};
  };
  const std::string quoted = "quoted-printable";
  const Case cases[] = {
      {L"Hello", L"", {"7bit"}, {"7bit"}},
      {L"Gr\u00fc\u00dfe", L"", {"8bit"}, {quoted}},
      {long_line, L"", {quoted}, {quoted}},
      {L"Hello", L"<p>Hello", {"7bit", "7bit", "7bit"}, {"7bit", "7bit", "7bit"}},
      {L"Hello", L"<p>\u00fc", {"8bit", "7bit", "8bit"}, {"7bit", "7bit", quoted}},
      {L"\u00fc", L"<p>\u00fc", {"8bit", "8bit", "8bit"}, {"7bit", quoted, quoted}},
      {L"\u00fc", long_line, {"8bit", "8bit", quoted}, {"7bit", quoted, quoted}},
      {L"Hello",
       L"<p>\u00fc",
       {"8bit", "7bit", "8bit", "8bit", "base64"},
       {"7bit", "7bit", "7bit", quoted, "base64"},
       {{"a1@agency.example", "image/png", "picture"}}},
  };
  const auto encodings = [](const WireMessage& message) {
    constexpr std::string_view kField = "Content-Transfer-Encoding: ";
    const std::string_view wire = message.bytes.View();
    std::vector<std::string> names;
    for (std::size_t at = 0; (at = wire.find(kField, at)) != std::string_view::npos;) {
      at += kField.size();
      names.emplace_back(wire.substr(at, wire.find('\r', at) - at));
    }
    return names;
  };
  for (const Case& test : cases) {
    WireMessage message = Composed({.subject = L"",
                                    .name = L"",
                                    .body = test.plain,
                                    .html = test.html,
                                    .pictures = test.pictures});
    EXPECT_EQ(encodings(message), test.composed) << ToUtf8(test.plain + test.html);
    MakeSevenBit(message);
    EXPECT_EQ(encodings(message), test.seven_bit) << ToUtf8(test.plain + test.html);
    EXPECT_TRUE(IsAscii(message.bytes.View()));
  }
}

// Each message is as if it were the first, whatever stood in its place, and whether or not it is
// known from the start that eight-bit parts cannot go out.
TEST(MessageComposerTest, NothingOfAnEarlierMessageStays) {
  const Kind plain = {.subject = L"News", .name = L"", .body = L"Hello"};
  const Kind eight_bit = {.subject = L"News", .name = L"", .body = L"Gr\u00fc\u00dfe"};
  const Kind html = {.subject = L"News",
                     .name = L"",
                     .body = L"caf\u00e9",
                     .html = L"<p>\u20ac",
                     .pictures = {{"a1@agency.example", "image/png", "picture"}}};
  WireMessage message;
  for (const auto& [is_allowed, is_rewritten] :
       {std::pair(true, false), {true, true}, {false, false}, {true, false}}) {
    for (const Kind& kind : {html, plain, eight_bit, html, eight_bit}) {
      WireMessage expected = Composed(kind);
      if (!is_allowed || is_rewritten) MakeSevenBit(expected);
      Compose(kind, is_allowed, message);
      if (is_rewritten) MakeSevenBit(message);
      EXPECT_EQ(Unstuffed(message.bytes.View()), Unstuffed(expected.bytes.View()));
      EXPECT_EQ(message.eight_bit_parts.size(), expected.eight_bit_parts.size());
    }
  }
}

TEST(MessageComposerTest, UnsubscribeFields) {
  const auto composed = [](const wchar_t* unsubscribe) {
    const WireMessage message =
        Composed({.subject = L"News", .name = L"", .body = L"x", .unsubscribe = unsubscribe});
    return std::string(message.bytes.View());
  };
  EXPECT_THAT(composed(L" HTTPS://agency.example/x "),
              testing::HasSubstr("List-Unsubscribe:\r\n <https://agency.example/x>\r\n"
                                 "List-Unsubscribe-Post: List-Unsubscribe=One-Click\r\n"));
  EXPECT_THAT(composed(L"mailto:stop@agency.example"),
              testing::HasSubstr("List-Unsubscribe:\r\n <mailto:stop@agency.example>\r\nC"));
  for (const wchar_t* other :
       {L"", L"http://agency.example", L"mailto:", L"https://agency.example/a b",
        L"https://agency.example/>\r\nBcc: x@y"})
    EXPECT_THAT(composed(other), testing::Not(testing::HasSubstr("List-"))) << ToUtf8(other);
}

}  // namespace
}  // namespace pxscheduler
