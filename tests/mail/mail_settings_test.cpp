#include "mail/mail_settings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/fake_components.h"
#include "tests/support/fake_platform.h"

namespace pxscheduler {
namespace {

using testing::_;
using testing::ElementsAre;

class MailSettings : public testing::Test {
 protected:
  MailSettings() { connection_.database = L"Agency"; }

  void Set(const std::wstring& name, const std::wstring& value) {
    registry_.Set(RegistryRoot::kLocalMachine, L"Software\\Kestrova\\Orbalis\\Agency", name, value);
  }
  const std::vector<std::wstring>& Apply() {
    mail_.calls.clear();
    ApplyMailSettings(registry_, ansi_, passwords_, connection_, mail_);
    return mail_.calls;
  }

  FakeRegistry registry_;
  Latin1CodePage ansi_;
  FakePasswords passwords_;
  FakeConnection connection_;
  FakeMailComponent mail_;
};

TEST_F(MailSettings, ServerAndPort) {
  const struct {
    const wchar_t* server;
    const wchar_t* host;
    const wchar_t* port;
  } cases[] = {
      {L"mail.example.org", L"host mail.example.org", L"port 25"},
      {L"mail.example.org:587", L"host mail.example.org", L"port 587"},
      {L"mail: 5 8 7 x", L"host mail", L"port 587"},
      {L"mail:", L"host mail", L"port 0"},
      {L"mail:other:25", L"host mail", L"port 0"},
      {L":2525", L"host ", L"port 2525"},
      {L"", L"host ", L"port 25"},
      {L"mail:24.5", L"host mail", L"port 24"},
  };
  for (const auto& c : cases) {
    Set(L"EmailServer", c.server);
    const std::vector<std::wstring>& calls = Apply();
    EXPECT_EQ(calls[0], c.host) << c.server;
    EXPECT_EQ(calls[1], c.port) << c.server;
  }
  Set(L"EmailServer", L"mail:99999999999");
  EXPECT_THROW(Apply(), RuntimeError);
}

TEST_F(MailSettings, TheLoginIsReadOnlyWhenAuthenticationIsOn) {
  Set(L"EmailFrom", L"news@example.org");
  Set(L"EmailUser", L"ann");
  Set(L"EmailPassword", L"clear");
  EXPECT_THAT(Apply(), ElementsAre(L"host ", L"port 25", L"sender news@example.org", L"mode 0",
                                   L"security ", L"unsubscribe "));
  for (const wchar_t* on : {L"1", L"-1", L"True", L" true "}) {
    Set(L"EmailAuthenticate", on);
    EXPECT_THAT(Apply(), ElementsAre(L"host ", L"port 25", L"sender news@example.org", L"mode 1",
                                     L"option 256", L"user ann", L"password clear", L"security ",
                                     L"unsubscribe "));
  }
  for (const wchar_t* neither : {L"", L"yes"}) {
    Set(L"EmailAuthenticate", neither);
    EXPECT_THROW(Apply(), RuntimeError);
  }
}

TEST_F(MailSettings, SecurityAndUnsubscribingArePassedOn) {
  Set(L"EmailSecurity", L"required");
  Set(L"EmailUnsubscribe", L"mailto:stop@example.org");
  EXPECT_THAT(Apply(), ElementsAre(_, _, _, _, L"security required",
                                   L"unsubscribe mailto:stop@example.org"));
}

TEST_F(MailSettings, EachDatabaseHasItsOwn) {
  Set(L"EmailServer", L"agency");
  connection_.database = L"Other";
  EXPECT_EQ(Apply()[0], L"host ");
}

}  // namespace
}  // namespace pxscheduler
