#include "letters/html/embedded_pictures.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/fake_platform.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

const std::string kPng = "\x89PNG\r\n\x1A\n.";
const std::string kGif = "GIF89a.";
constexpr const wchar_t* kData = L"data:image/png;base64,iVBORw0KGgou";

class EmbeddedPictures : public testing::Test {
 protected:
  EmbeddedPictures() {
    system_.files[L"C:\\Letters\\logo.png"] = kPng;
    system_.files[L"C:\\Letters\\img\\a b.gif"] = kGif;
    system_.files[L"C:\\Letters\\notes.txt"] = "text";
    system_.files[L"C:\\secret.png"] = kPng;
    system_.files[L"C:\\Letters of others\\logo.png"] = kPng;
    system_.folders.insert(L"C:\\Letters\\");
    system_.links[L"C:\\Letters\\inside.png"] = L"C:\\Letters\\logo.png";
    system_.links[L"C:\\Letters\\outside.png"] = L"C:\\secret.png";
    system_.links[L"C:\\Letters\\beside.png"] = L"C:\\Letters of others\\logo.png";
  }

  // The document with each "cid:" address cut down to "cid:" and its number.
  std::wstring Embedded(std::wstring html) {
    parts_ = EmbedPictures(html, L"C:\\Letters\\may.htm", system_);
    for (std::size_t at = html.find(L"cid:picture"); at != std::wstring::npos;
         at = html.find(L"cid:picture", at + 1))
      html.replace(at + 4, html.find(L'"', at) - at - 4, html.substr(at + 11, 1));
    return html;
  }

  FakeSystem system_;
  std::vector<LetterPicture> parts_;
};

TEST_F(EmbeddedPictures, EmbedsFilesOfTheFolderAndData) {
  EXPECT_EQ(
      Embedded(
          std::wstring(L"<IMG alt=\"a > b\" SRC='logo.png'><img src=img/a%20b.gif?v=1>"
                       L"<img src=\"") +
          kData +
          L"\"><td background=\"file:///C:/Letters/img/../logo.png\">logo.png<img src=inside.png>"
          L"<img src='file:C:/Letters/logo.png'><img src=file://pc/C:/Letters/logo.png>"),
      L"<IMG alt=\"a > b\" SRC=\"cid:1\"><img src=\"cid:2\"><img src=\"cid:1\">"
      L"<td background=\"cid:1\">logo.png<img src=\"cid:1\"><img src=\"cid:1\"><img "
      L"src=\"cid:1\">");
  ASSERT_EQ(parts_.size(), 2U);
  EXPECT_EQ(parts_[0].bytes, kPng);
  EXPECT_EQ(parts_[0].media_type, "image/png");
  EXPECT_EQ(parts_[1].bytes, kGif);
  EXPECT_NE(parts_[0].content_id, parts_[1].content_id);
  EXPECT_TRUE(system_.warnings.empty());
}

TEST_F(EmbeddedPictures, LeavesEverythingElse) {
  for (const wchar_t* html :
       {L"<img src=\"https://a.example/logo.png\">", L"<img src=\"//a.example/logo.png\">",
        L"<img src=\"cid:x@y\">", L"<img src=\"[Number].png\">", L"<img src>", L"<img src=''>",
        L"<a href=\"logo.png\">", L"<img src=\"logo.png", L"<img src", L"< img src=\"logo.png\">",
        L"<img src=\"data:text/plain;base64,aGVsbG8=\">", L"<img src=\"data:image/png,x\">"})
    EXPECT_EQ(Embedded(html), html);
  EXPECT_TRUE(system_.warnings.empty());
  EXPECT_TRUE(parts_.empty());
}

// The folder of the letter may itself be reached by a link.
TEST_F(EmbeddedPictures, EmbedsFilesOfALinkedFolder) {
  system_.links[L"C:\\Letters\\"] = L"C:\\Letters of others";
  system_.folders.insert(L"C:\\Letters of others");
  EXPECT_EQ(Embedded(L"<img src=beside.png><img src=logo.png>"),
            L"<img src=\"cid:1\"><img src=logo.png>");
  EXPECT_EQ(system_.warnings.size(), 1U);
}

TEST_F(EmbeddedPictures, WarnsOnceOfAFileThatStays) {
  for (const wchar_t* name :
       {L"missing.png", L"notes.txt", L"../secret.png", L"img\\..\\..\\secret.png",
        L"C:\\secret.png", L"file:///C:/secret.png", L"file:///C:/Letters/../secret.png",
        L"%2e%2e/secret.png", L"/secret.png", L"outside.png", L"beside.png",
        L"file:///C:/Letters/outside.png"}) {
    system_.warnings.clear();
    const std::wstring html = L"<img src=\"" + std::wstring(name) + L"\">";
    EXPECT_EQ(Embedded(html + html), html + html);
    EXPECT_EQ(system_.warnings.size(), 1U) << ToUtf8(name);
    EXPECT_TRUE(parts_.empty());
  }
}

}  // namespace
}  // namespace pxscheduler
