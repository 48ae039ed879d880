#include "mail/mail_settings.h"

#include <string>
#include <string_view>

#include "config/helper_library.h"
#include "data/value.h"
#include "platform/runtime_error.h"

namespace pxscheduler {
namespace {

constexpr std::int32_t kSmtpPort = 25;
constexpr wchar_t kPasswordValue[] = L"EmailPassword";
constexpr wchar_t kEncipheredMark[] = L"v1:";

void WarnOfClearPassword(System& system, const Registry& registry, const std::wstring& key,
                         const std::wstring& stored) {
  const std::wstring file = registry.FileOf(RegistryRoot::kLocalMachine, key, kPasswordValue);
  if (stored.empty() || stored.starts_with(kEncipheredMark) || file.empty() ||
      !system.IsReadableByAll(file))
    return;
  system.Warn(L"The mail password stands in the clear in a file that everybody may read: " +
              PlaceOf(registry, RegistryRoot::kLocalMachine, key, kPasswordValue) +
              L". Encipher it (pxsecret encipher), and change it.");
}

}  // namespace

void ApplyMailSettings(System& system, const Registry& registry, const CodePage& ansi,
                       const Passwords& passwords, Connection& connection, MailComponent& mail) {
  // Each value asks for the database anew: the settings follow the connection.
  const auto key = [&connection] {
    return std::wstring{kProductKey} + L"\\" + connection.DefaultDatabase();
  };
  const auto setting = [&](const std::wstring& name, const std::wstring& default_value = L"") {
    return GetRegValue(registry, ansi, RegistryRoot::kLocalMachine, key(), name, default_value);
  };
  const auto place = [&](const std::wstring& name) {
    return PlaceOf(registry, RegistryRoot::kLocalMachine, key(), name);
  };

  const std::wstring server = setting(L"EmailServer");
  const std::size_t colon = server.find(L':');
  if (server.empty())
    system.Warn(L"No mail server: " + place(L"EmailServer") + L" is missing. Every message fails.");
  mail.SetServerHost(server.substr(0, colon));
  mail.SetServerPort(WithDetails(
      [&] {
        return L"The port in " + place(L"EmailServer") + L" is no port: \"" + server + L"\".";
      },
      [&] {
        return colon == std::wstring::npos
                   ? kSmtpPort
                   : ToWholeNumber(LeadingNumber(std::wstring_view{server}.substr(colon + 1)));
      }));
  mail.SetSenderAddress(setting(L"EmailFrom"));

  const std::wstring authenticate = setting(L"EmailAuthenticate", L"0");
  if (WithDetails(
          [&] {
            return place(L"EmailAuthenticate") + L" must be -1, 0, True or False; it is \"" +
                   authenticate + L"\".";
          },
          [&] { return BooleanFromText(authenticate); })) {
    mail.SetAuthenticationMode(MailComponent::kAuthenticateLogin);
    mail.SetAuthenticationOption(MailComponent::kAuthenticationOption);
    mail.SetUserName(setting(L"EmailUser"));
    const std::wstring password = setting(kPasswordValue);
    mail.SetPassword(Decrypt10(passwords, ansi, password));
    WarnOfClearPassword(system, registry, key(), password);
  } else {
    mail.SetAuthenticationMode(MailComponent::kAuthenticateNone);
  }
  mail.SetSecurity(setting(L"EmailSecurity"));
  mail.SetUnsubscribe(setting(L"EmailUnsubscribe"));
}

}  // namespace pxscheduler
