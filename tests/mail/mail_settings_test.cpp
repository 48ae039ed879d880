#include "mail/mail_settings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/fake_components.h"
#include "tests/support/fake_platform.h"

namespace pxscheduler {
namespace {

using testing::ElementsAre;

class MailSettings : public testing::Test {
 protected:
  void Set(const std::wstring& name, const std::wstring& value) {
    registry_.Set(RegistryRoot::kLocalMachine, L"Software\\Kestrova\\Orbalis\\Agency", name, value);
  }
  std::vector<std::wstring> Applied() {
    FakeConnection connection;
    FakeMailComponent mail;
    FakeSystem system;
    ApplyMailSettings(system, registry_, Latin1CodePage(), FakePasswords(), connection, mail);
    return mail.calls;
  }

  FakeRegistry registry_;
};

TEST_F(MailSettings, ServerAndPort) {
  const struct {
    const wchar_t* server;
    const wchar_t* host;
    const wchar_t* port;
  } cases[] = {
      {L"mail.example.org", L"host mail.example.org", L"port 25"},
      {L"mail: 5 8 7 x", L"host mail", L"port 587"},
      {L"mail:", L"host mail", L"port 0"},
      {L"mail:other:25", L"host mail", L"port 0"},
      {L":2525", L"host ", L"port 2525"},
      {L"", L"host ", L"port 25"},
      {L"mail:24.5", L"host mail", L"port 24"},
  };
  for (const auto& c : cases) {
    Set(L"EmailServer", c.server);
    EXPECT_EQ(Applied().at(0), c.host) << c.server;
    EXPECT_EQ(Applied().at(1), c.port) << c.server;
  }
}

TEST_F(MailSettings, TheLoginIsReadOnlyWhenAuthenticationIsOn) {
  Set(L"EmailFrom", L"news@example.org");
  Set(L"EmailUser", L"ann");
  Set(L"EmailPassword", L"stored");
  Set(L"EmailSecurity", L"required");
  Set(L"EmailUnsubscribe", L"mailto:stop@example.org");
  EXPECT_THAT(Applied(), ElementsAre(L"host ", L"port 25", L"sender news@example.org", L"mode 0",
                                     L"security required", L"unsubscribe mailto:stop@example.org"));
  Set(L"EmailAuthenticate", L"True");
  EXPECT_THAT(Applied(), ElementsAre(L"host ", L"port 25", L"sender news@example.org", L"mode 1",
                                     L"option 256", L"user ann", L"password deciphered stored",
                                     L"security required", L"unsubscribe mailto:stop@example.org"));
}

}  // namespace
}  // namespace pxscheduler
