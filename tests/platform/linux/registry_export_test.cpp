#include "platform/linux/registry_export.h"

#include <gmock/gmock.h>

#include "platform/linux/file_registry.h"
#include "tests/support/raised_by.h"
#include "tests/support/scratch_folder.h"

namespace pxscheduler {
namespace {

constexpr auto kMachine = RegistryRoot::kLocalMachine;
constexpr auto kUser = RegistryRoot::kCurrentUser;
const std::string kHeader = "Windows Registry Editor Version 5.00\r\n\r\n";

std::string Utf16(const std::string& ascii) {
  std::string bytes = "\xFF\xFE";
  for (const char c : ascii) bytes += {c, '\0'};
  return bytes;
}

RegistryContent Read(const std::string& bytes) {
  RegistryContent content;
  ApplyRegistryExport(bytes, "a.reg", content);
  return content;
}

// "(none)" for nothing.
std::wstring ValueOf(const RegistryContent& content, const wchar_t* name,
                     RegistryRoot root = kMachine, const wchar_t* key = L"K") {
  const RegistryValue* value = content.Find(root, key, name);
  return value == nullptr ? L"(none)" : value->text;
}

TEST(RegistryExport, ReadsEveryKindOfValue) {
  const struct {
    const char* line;
    const wchar_t* expected;
  } cases[] = {
      {R"("v"="plain")", L"plain"},
      {R"("v"="C:\\Data \"x\"; [y]" ; a comment)", L"C:\\Data \"x\"; [y]"},
      {R"("v"="")", L""},
      {R"( "V" = "blanks" )", L"blanks"},
      {R"("v"=dword:0000ea60)", L"60000"},
      {R"("v"=DWORD:FFFFFFFF)", L"4294967295"},
      {R"("v"=hex(2):25,00,41,00,25,00,00,00)", L"%A%"},
      {"\"v\"=hex(2):25,00,\\\r\n  41,00,\\\r\n  25,00,00,00", L"%A%"},
      {"\"v\"=hex(1):\\\r\n  3d,d8,82,df", L"\U0001F782"},
      {R"("v"=hex(2):)", L""},
      {R"("v"=hex(b):00,00,00,00,01,00,00,00)", L"4294967296"},
      {R"("v"=hex(4):e8,3,0,0)", L"1000"},
      {R"("v"=hex(7):41,00,00,00,00,00)", L"(none)"},
      {R"("v"=hex:01,02,ff)", L"(none)"},
      {"\"v\"=\"first\"\r\n\"v\"=-", L"(none)"},
      {"\"v\"=\"first\"\r\n\"v\"=hex:01", L"(none)"},
      {"\"v\"=\"first\"\r\n\"v\"=\"second\"", L"second"},
      {"\"v\"=\"kept\"\r\n[HKEY_CLASSES_ROOT\\K]\r\n\"v\"=\"other\"", L"kept"},
      {"\"v\"=\"gone\"\r\n[-HKEY_LOCAL_MACHINE\\k]", L"(none)"},
      {"; \"v\"=\"comment\"\r\n\r\n\t; another", L"(none)"},
  };
  for (const auto& c : cases) {
    const std::string text = kHeader + "[HKEY_LOCAL_MACHINE\\K]\r\n" + c.line + "\r\n";
    EXPECT_EQ(ValueOf(Read(text), L"v"), c.expected) << c.line;
  }
}

TEST(RegistryExport, ReadsEveryEncoding) {
  const std::string text = kHeader + "[HKLM\\K]\r\n@=\"default\"\r\n\"\"=\"same\"";
  std::string with_line_feeds = text;
  std::erase(with_line_feeds, '\r');
  for (const std::string& bytes : {text, "\xEF\xBB\xBF" + text, Utf16(text), with_line_feeds})
    EXPECT_EQ(ValueOf(Read(bytes), L""), L"same");
  EXPECT_EQ(ValueOf(Read(kHeader + "[HKLM\\K]\n\"\xC3\x9C\"=\"\xE2\x82\xAC\""), L"\u00FC"),
            L"\u20AC");
  EXPECT_EQ(ValueOf(Read(""), L""), L"(none)");
}

TEST(RegistryExport, FindsKeysAsARegistryDoes) {
  const RegistryContent content = Read(kHeader +
                                       "[HKEY_CURRENT_USER\\A\\B]\n@=\"user\"\n"
                                       "[hklm\\A\\B [x]]\n@=\"brackets\"\n"
                                       "[HKLM\\A\\B]\n@=\"machine\"\n"
                                       "[HKLM\\A\\Bc]\n@=\"neighbour\"\n"
                                       "[HKLM\\A\\B\\C]\n@=\"below\"\n"
                                       "[HKLM\\Software\\WOW6432Node\\Maker]\n@=\"32 bit\"\n");
  EXPECT_EQ(ValueOf(content, L"", kUser, L"a\\b"), L"user");
  EXPECT_EQ(ValueOf(content, L"", kMachine, L"a\\B\\"), L"machine");
  EXPECT_EQ(ValueOf(content, L"", kMachine, L"A\\B [x]"), L"brackets");
  EXPECT_EQ(ValueOf(content, L"", kMachine, L"SOFTWARE\\maker"), L"32 bit");
  EXPECT_EQ(ValueOf(content, L"", kUser, L"SOFTWARE\\maker"), L"(none)");

  RegistryContent changed = content;
  ApplyRegistryExport(kHeader + "[-HKLM\\A\\B]\n", "b.reg", changed);
  EXPECT_EQ(changed.Find(kMachine, L"A\\B", L""), nullptr);
  EXPECT_EQ(changed.Find(kMachine, L"A\\B\\C", L""), nullptr);
  EXPECT_NE(changed.Find(kMachine, L"A\\Bc", L""), nullptr);
  EXPECT_NE(changed.Find(kUser, L"A\\B", L""), nullptr);
}

TEST(RegistryExport, NamesTheMalformedLine) {
  const struct {
    std::string text;
    std::wstring where_and_why;
  } cases[] = {
      {"REGEDIT4\n", L"line 1: not a registry export"},
      {"\n" + kHeader, L"line 1: not a registry export"},
      {"Windows Registry Editor Version 5.00 beta\n", L"line 1: more text than expected"},
      {kHeader + "@=\"x\"", L"line 3: a value outside of a key"},
      {kHeader + "[HKLM\\K\n", L"line 3: no closing bracket"},
      {kHeader + "[HKLM\\K] x\n", L"line 3: more text"},
      {kHeader + "[HKEY_NOWHERE\\K]\n", L"line 3: unknown root key"},
      {kHeader + "[-HKLM]\n", L"line 3: a root"},
      {kHeader + "[-HKLM\\K]\n@=\"x\"", L"line 4: a value outside of a key"},
      {kHeader + "[HKLM\\K]\nv=\"x\"", L"line 4: neither a key nor a value"},
      {kHeader + "[HKLM\\K]\n\"v=1", L"line 4: no closing quotation mark"},
      {kHeader + "[HKLM\\K]\n\"v\" \"x\"", L"line 4: no \"=\""},
      {kHeader + "[HKLM\\K]\n\"v\"=\"x", L"line 4: no closing quotation mark"},
      {kHeader + "[HKLM\\K]\n\"v\"=\"C:\\Data\"", L"line 4: a single \"\\\""},
      {kHeader + "[HKLM\\K]\n\"v\"=\"x\\", L"line 4: a single \"\\\""},
      {kHeader + "[HKLM\\K]\n\"v\"=\"x\"y", L"line 4: more text"},
      {kHeader + "[HKLM\\K]\n\"v\"=17", L"line 4: unknown kind"},
      {kHeader + "[HKLM\\K]\n\"v\"=", L"line 4: unknown kind"},
      {kHeader + "[HKLM\\K]\n\"v\"=dword:", L"line 4: a dword"},
      {kHeader + "[HKLM\\K]\n\"v\"=dword:123456789", L"line 4: a dword"},
      {kHeader + "[HKLM\\K]\n\"v\"=dword:12g", L"line 4: more text"},
      {kHeader + "[HKLM\\K]\n\"v\"=hex(2:00", L"line 4: unknown kind"},
      {kHeader + "[HKLM\\K]\n\"v\"=hex:1,", L"line 4: a byte"},
      {kHeader + "[HKLM\\K]\n\"v\"=hex:100", L"line 4: a byte"},
      {kHeader + "[HKLM\\K]\n\"v\"=hex:1 2", L"line 4: more text"},
      {kHeader + "[HKLM\\K]\n\"v\"=hex:1,\\", L"line 4: the value breaks off"},
      {kHeader + "[HKLM\\K]\n\"v\"=hex:1,\\\n2,\\\n[HKLM]", L"line 6: a byte"},
      {kHeader + "[HKLM\\K]\n\"v\"=hex(1):41", L"line 4: the bytes are not UTF-16"},
      {kHeader + "[HKLM\\K]\n\"v\"=hex(2):3d,d8", L"line 4: the bytes are not UTF-16"},
      {kHeader + "[HKLM\\K]\n\"v\"=hex(b):1,2,3,4", L"line 4: a number has"},
      {kHeader + "[HKLM\\K]\n\"\xFC\"=\"x\"", L"line 4: not UTF-8"},
      {kHeader + "[HKLM\\K]\n\"v\"=\"" + std::string(1, '\0') + "\"", L"line 4: a NUL"},
      {Utf16(kHeader + "[HKLM\\K]") + "\r", L"line 3: not UTF-16"},
  };
  for (const auto& c : cases) {
    const RuntimeError error = RaisedBy([&] { Read(c.text); });
    EXPECT_EQ(error.number, 321) << c.text;
    EXPECT_THAT(error.description,
                testing::StartsWith(L"Invalid file format: a.reg, " + c.where_and_why))
        << c.text;
  }
}

// A secret that stands on a malformed line is not told.
TEST(RegistryExport, NeverQuotesALine) {
  const RuntimeError error =
      RaisedBy([] { Read(kHeader + "[HKLM\\K]\n\"EmailPassword\"=\"hunter2\\\""); });
  EXPECT_EQ(error.number, 321);
  EXPECT_THAT(error.description, testing::Not(testing::HasSubstr(L"hunter2")));
}

// Each would take minutes if the work grew with the square of the size.
TEST(RegistryExport, TakesLargeFilesInItsStride) {
  std::string many_values = kHeader + "[HKLM\\" + std::string(1'000'000, 'k') + "]\n";
  std::string many_keys = kHeader;
  for (int i = 0; i < 50'000; ++i) {
    many_values += '"' + std::to_string(i) + "\"=\"x\"\n";
    many_keys += "[HKLM\\A\\" + std::to_string(i) + "]\n@=\"x\"\n[-HKLM\\A\\B]\n";
  }
  std::string one_value = kHeader + "[HKLM\\K]\n\"v\"=hex:";
  for (int i = 0; i < 100'000; ++i) one_value += "00,11,\\\n  ";
  one_value += "22\n";
  Read(many_values);
  Read(many_keys);
  Read(Utf16(one_value));
}

TEST(FileRegistry, PutsLaterFilesOverEarlierOnes) {
  const ScratchFolder folder;
  const FileRegistry registry(
      {folder.Path("missing.reg"),
       folder.Write("machine.reg", kHeader + "[HKLM\\K]\n\"a\"=\"1\"\n\"b\"=\"1\"\n\"c\"=\"1\"\n"
                                             "[HKLM\\K\\Sub]\n@=\"1\"\n"),
       folder.Write("user.reg", kHeader + "[-HKLM\\K\\Sub]\n[HKLM\\k]\n\"A\"=\"2\"\n\"b\"=-\n")});
  EXPECT_EQ(registry.Value(kMachine, L"K", L"a"), L"2");
  EXPECT_EQ(registry.Value(kMachine, L"K", L"b"), std::nullopt);
  EXPECT_EQ(registry.Value(kMachine, L"K", L"c"), L"1");
  EXPECT_EQ(registry.Value(kMachine, L"K\\Sub", L""), std::nullopt);
}

TEST(FileRegistry, KnowsWhereTheFilesAre) {
  EXPECT_THAT(RegistryFiles("/only.reg", "/home/a"), testing::ElementsAre("/only.reg"));
  EXPECT_THAT(
      RegistryFiles("", "/home/a"),
      testing::ElementsAre("/etc/orbalis/orbalis.reg", "/home/a/.config/orbalis/orbalis.reg"));
  EXPECT_THAT(RegistryFiles("", ""), testing::ElementsAre("/etc/orbalis/orbalis.reg"));
}

}  // namespace
}  // namespace pxscheduler
