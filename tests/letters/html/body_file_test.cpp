#include "letters/html/body_file.h"

#include <gtest/gtest.h>

#include <string>

namespace pxscheduler {
namespace {

// Says which encoding was asked for.
class NamingCodePage : public CodePage {
 public:
  explicit NamingCodePage(std::string_view name) : name_(name.begin(), name.end()) {}
  std::string ToBytes(std::wstring_view /*text*/) const override { return {}; }
  std::wstring FromBytes(std::string_view bytes) const override {
    return name_ + L":" + std::wstring(bytes.begin(), bytes.end());
  }
  std::wstring RoundTrip(std::wstring text) const override { return text; }

 private:
  std::wstring name_;
};

class NamingCodePages : public CodePages {
 public:
  const CodePage& Ansi() const override { return ansi_; }
  std::unique_ptr<CodePage> Find(std::string_view name) const override {
    return name == "unheard-of" ? nullptr : std::make_unique<NamingCodePage>(name);
  }

 private:
  NamingCodePage ansi_{"ansi"};
};

TEST(BodyFileTest, Encodings) {
  using namespace std::string_literals;
  struct Case {
    std::string bytes;
    std::wstring start;  // of the text
  };
  const Case cases[] = {
      {"plain", L"ansi:plain"},
      {"\xEF\xBB\xBFplain", L"UTF-8:plain"},
      {"\xFF\xFEp", L"UTF-16LE:p"},
      {"\xFE\xFFp", L"UTF-16BE:p"},
      {"\xFF\xFE\0\0p"s, L"UTF-32LE:p"},
      {"\xEF\xBB\xBF<meta charset=koi8-r>", L"UTF-8:"},
      {"<html><meta charset=\"ISO-8859-2\">", L"iso-8859-2:<html>"},
      {"<HTML><META HTTP-EQUIV='Content-Type' CONTENT='text/html; charset=Windows-1250'>",
       L"windows-1250:"},
      {"<html><meta charset = utf-8 />", L"utf-8:"},
      {"<html><meta charset=utf-16>", L"utf-8:"},
      {"<html><!-- <meta charset=koi8-r> --><meta charset=big5>", L"big5:"},
      {"<?xml version=\"1.0\" encoding=\"utf-8\"?><html>", L"utf-8:"},
  };
  for (const auto& [bytes, start] : cases)
    EXPECT_TRUE(DecodeBodyFile(bytes, NamingCodePages()).starts_with(start)) << bytes;
  for (const std::string& bytes :
       {""s, "<html><meta charset=unheard-of>"s, "<html><meta charset"s, "<html><meta charset="s,
        "<html><!-- <meta charset=koi8-r>"s, "<meta name=x><p charset=koi8-r>"s,
        std::string(5000, ' ') + "<meta charset=utf-8>"})
    EXPECT_TRUE(DecodeBodyFile(bytes, NamingCodePages()).starts_with(L"ansi:")) << bytes;
}

}  // namespace
}  // namespace pxscheduler
