#include "letters/component/rich_text_control.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/fake_platform.h"
#include "tests/support/raised_by.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

const std::string kHeader(30, 'h');

class RichTextControlTest : public testing::Test {
 protected:
  // Loads a file of these bytes and saves it with the control's own page.
  std::string Converted(const std::string& bytes) {
    system_.files[L"letter.qzw"] = bytes;
    control_.Load(L"letter.qzw", 30, TextControl::kFormatRichText);
    for (int i = 0; i < TextControl::kPageValues; ++i)
      control_.SetDocumentPageValue(i, control_.PageSetting(i));
    control_.Save(L"out.htm", 0, TextControl::kFormatHtml);
    return system_.files[L"out.htm"];
  }

  FakeSystem system_;
  FakeCodePages code_pages_;
  RichTextControl control_{system_, code_pages_};
};

TEST_F(RichTextControlTest, TellsTheFormFromTheFirstBytes) {
  EXPECT_NE(Converted(kHeader + "{\\rtf1 {\\b x}y}").find("<b>x</b>y"), std::string::npos);
  EXPECT_NE(Converted(kHeader + "plain <\xE9>\r\n [Full Name]   two\tb")
                .find("plain &lt;\u00E9&gt;</p>\n<p style=\"margin:0\">&nbsp;[Full Name] &nbsp; "
                      "two&nbsp;&nbsp;&nbsp;&nbsp;&nbsp;&nbsp;b</p>"),
            std::string::npos);
  const std::string page = "<style>@page{size:595.3pt 841.9pt;margin:72pt}</style>";
  EXPECT_EQ(Converted(kHeader + "\r\n<HTML><HEAD></HEAD>\xE9</HTML>"),
            "\r\n<HTML><HEAD>" + page + "\n</HEAD>\xE9</HTML>");
  const std::string own = "<html><head><style>@page{margin:0}</style></head></html>";
  EXPECT_EQ(Converted(kHeader + own), own);
  EXPECT_EQ(Converted(kHeader + "<p>part</p>"),
            "<html><head>" + page + "</head><body>\n<p>part</p>\n</body></html>\n");
  EXPECT_TRUE(Converted(kHeader).ends_with("</body></html>\n"));
}

TEST_F(RichTextControlTest, RefusesWhatIsNoDocument) {
  for (const std::string& bytes :
       {std::string(29, 'h'), kHeader + "\x01binary", kHeader + "\x7F"}) {
    system_.files[L"letter.qzw"] = bytes;
    const RuntimeError error =
        RaisedBy([&] { control_.Load(L"letter.qzw", 30, TextControl::kFormatRichText); });
    EXPECT_EQ(error.number, 321) << bytes;
    EXPECT_NE(error.description.find(L"letter.qzw"), std::wstring::npos);
  }
  EXPECT_THROW(control_.Load(L"missing.qzw", 30, TextControl::kFormatRichText), RuntimeError);
}

TEST_F(RichTextControlTest, TellsOfPicturesThatAreNotShownAsTheyAre) {
  const std::string png = "{\\pict\\pngblip 89504e470d0a1a0a";
  const std::string metafile = "{\\pict\\wmetafile8 0102}";
  const std::string too_large(std::size_t{16} << 20, 'x');
  const struct {
    std::string rtf;
    std::vector<std::wstring> warnings;
  } cases[] = {
      {png + "}", {}},
      {"{\\*\\shppict" + png + "}}{\\nonshppict" + metafile + "}{\\v" + metafile + "}{\\pict}", {}},
      {metafile, {L"a picture is left out: WMF or EMF"}},
      {metafile + "{\\pict\\emfblip 01}{\\pict\\jpegblip 0102}",
       {L"2 pictures are left out: WMF or EMF", L"a picture is left out: not PNG"}},
      {"{\\pict\\jpegblip\\bin16777217 " + too_large + "x}", {L"a picture is left out: larger"}},
      {png + "\\piccropl100}", {L"a picture is shown whole"}},
  };
  for (const auto& c : cases) {
    system_.warnings.clear();
    Converted(kHeader + "{\\rtf1 x" + c.rtf + "}");
    ASSERT_EQ(system_.warnings.size(), c.warnings.size()) << c.rtf.substr(0, 99);
    for (std::size_t i = 0; i < c.warnings.size(); ++i)
      EXPECT_TRUE(system_.warnings[i].starts_with(L"letter.qzw: " + c.warnings[i]))
          << ToUtf8(system_.warnings[i]);
  }
}

TEST_F(RichTextControlTest, KnowsThePageOfTheDocument) {
  const auto values = [&](const std::string& rtf) {
    Converted(kHeader + rtf);
    control_.Load(L"letter.qzw", 30, TextControl::kFormatRichText);
    std::vector<std::int32_t> all(TextControl::kPageValues);
    for (int i = 0; i < TextControl::kPageValues; ++i)
      all[std::size_t(i)] = control_.DocumentPageValue(i);
    return all;
  };
  using Values = std::vector<std::int32_t>;
  EXPECT_EQ(values("{\\rtf1 x}"), (Values{0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(values("{\\rtf1\\paperw12240\\paperh15840\\margl1\\margr2\\margt3\\margb4 x}"),
            (Values{12240, 15840, 1, 3, 2, 4}));
  EXPECT_EQ(values("{\\rtf1\\pgwsxn1\\pghsxn2\\marglsxn3\\margtsxn4\\margrsxn5\\margbsxn6 x}"),
            (Values{1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(values("{\\rtf1\\paperw9\\margl8\\pgwsxn1\\marglsxn3\\paperw0\\margr-1 x}"),
            (Values{9, 0, 8, 0, 0, 0}));
  EXPECT_EQ(values("{\\rtf1\\paperw11906\\paperh16838\\landscape x}"),
            (Values{16838, 11906, 0, 0, 0, 0}));
  EXPECT_EQ(values("{\\rtf1\\paperw16838\\paperh11906\\landscape x}"),
            (Values{16838, 11906, 0, 0, 0, 0}));
}

}  // namespace
}  // namespace pxscheduler
