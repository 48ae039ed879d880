#include "mail/mail_settings.h"

#include <string>
#include <string_view>

#include "config/helper_library.h"
#include "data/value.h"

namespace pxscheduler {
namespace {

constexpr std::int32_t kSmtpPort = 25;

}  // namespace

void ApplyMailSettings(const Registry& registry, const CodePage& ansi, const Passwords& passwords,
                       Connection& connection, MailComponent& mail) {
  // Each value asks for the database anew: the settings follow the connection.
  const auto setting = [&](const std::wstring& name, const std::wstring& default_value = L"") {
    const std::wstring key = std::wstring{kProductKey} + L"\\" + connection.DefaultDatabase();
    return GetRegValue(registry, ansi, RegistryRoot::kLocalMachine, key, name, default_value);
  };

  const std::wstring server = setting(L"EmailServer");
  const std::size_t colon = server.find(L':');
  mail.SetServerHost(server.substr(0, colon));
  mail.SetServerPort(
      colon == std::wstring::npos
          ? kSmtpPort
          : ToWholeNumber(LeadingNumber(std::wstring_view{server}.substr(colon + 1))));
  mail.SetSenderAddress(setting(L"EmailFrom"));

  if (BooleanFromText(setting(L"EmailAuthenticate", L"0"))) {
    mail.SetAuthenticationMode(MailComponent::kAuthenticateLogin);
    mail.SetAuthenticationOption(MailComponent::kAuthenticationOption);
    mail.SetUserName(setting(L"EmailUser"));
    mail.SetPassword(Decrypt10(passwords, ansi, setting(L"EmailPassword")));
  } else {
    mail.SetAuthenticationMode(MailComponent::kAuthenticateNone);
  }
  mail.SetSecurity(setting(L"EmailSecurity"));
  mail.SetUnsubscribe(setting(L"EmailUnsubscribe"));
}

}  // namespace pxscheduler
