#include "compose/body_template.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/fake_components.h"
#include "tests/support/fake_platform.h"

namespace pxscheduler {
namespace {

using testing::ElementsAre;

// Hands out one text control, kept for the test to look at.
class TextControlOnly : public Components {
 public:
  class Shared : public FakeTextControl {
   public:
    explicit Shared(TextControlOnly& owner) : owner_(owner) {
      document_page = owner.recorded;
      page_settings = owner.settings;
    }
    Shared(const Shared&) = delete;
    Shared& operator=(const Shared&) = delete;
    ~Shared() override {
      owner_.calls = calls;
      owner_.recorded = document_page;
      owner_.settings = page_settings;
    }

   private:
    TextControlOnly& owner_;
  };

  std::unique_ptr<Connection> NewConnection() override { return nullptr; }
  std::unique_ptr<Recordset> NewRecordset() override { return nullptr; }
  std::unique_ptr<MailComponent> NewMailComponent() override { return nullptr; }
  std::unique_ptr<TextControl> NewTextControl() override { return std::make_unique<Shared>(*this); }

  std::vector<std::wstring> calls;
  std::array<std::int32_t, 6> recorded{11906, 0, -5, 1440, 0, 720};
  std::array<std::int32_t, 6> settings{1, 2, 3, 4, 5, 6};
};

class BodyTemplate : public testing::Test {
 protected:
  FakeSystem system_;
  Latin1CodePage ansi_;
  TextControlOnly components_;
  FakeMailComponent mail_;
};

TEST_F(BodyTemplate, ATemplateIsConvertedWithItsPage) {
  PrepareMessageBody(system_, ansi_, components_, mail_, L"C:\\t\\News.QzW");
  EXPECT_THAT(components_.calls,
              ElementsAre(L"load C:\\t\\News.QzW 30 3",
                          L"save " + system_.temporary_folder + L"scheduler.htm 0 4"));
  EXPECT_THAT(components_.settings, ElementsAre(11906, 2, 3, 1440, 5, 720));
  EXPECT_EQ(components_.recorded, components_.settings);
  EXPECT_THAT(mail_.calls, ElementsAre(L"load " + system_.temporary_folder + L"scheduler.htm 6"));
}

TEST_F(BodyTemplate, AnyOtherFileIsLoadedAsItStands) {
  mail_.load_status = 1;
  for (const wchar_t* path : {L"a.htm", L"b.rtf", L"qzw", L"c.qzw.txt", L"\"d.qzw\""}) {
    PrepareMessageBody(system_, ansi_, components_, mail_, path);
    EXPECT_EQ(mail_.calls.back(), L"load " + std::wstring{path} + L" 6");
  }
  EXPECT_TRUE(components_.calls.empty());
}

TEST_F(BodyTemplate, BothTagsTogetherMakeHtml) {
  const struct {
    const wchar_t* body;
    bool is_html;
  } cases[] = {
      {L"<html><body>[Number]</body></HTML>", true},
      {L"</html><html>", true},
      {L"<HTML>text", false},
      {L"text</HTML>", false},
      {L"<html lang=\"en\">x</html>", false},
      {L"", false},
  };
  for (const auto& c : cases) {
    mail_.calls.clear();
    mail_.body = c.body;
    mail_.alternative = L"alternative";
    const BodyTexts texts = PrepareMessageBody(system_, ansi_, components_, mail_, L"x.htm");
    EXPECT_EQ(mail_.calls.back() == L"html 1", c.is_html) << c.body;
    EXPECT_EQ(texts.body, c.body);
    EXPECT_EQ(texts.alternative, L"alternative");
  }
}

}  // namespace
}  // namespace pxscheduler
