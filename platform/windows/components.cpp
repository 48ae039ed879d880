#include "platform/windows/components.h"

#include "platform/data/session.h"
#include "platform/html/inline_pictures.h"
#include "platform/html/plain_text.h"
#include "platform/odbc/sql_server_session.h"
#include "platform/smtp/smtp_mail_component.h"
#include "platform/sqlite/sqlite_session.h"
#include "platform/windows/data_access.h"
#include "platform/windows/rich_text_component.h"

namespace pxscheduler {

std::unique_ptr<Connection> WindowsComponents::NewConnection() {
  System& system = machine_.TheSystem();
  return NewWindowsConnection(system,
                              {.embedded = SqliteOpener([&system] { return system.Now().local; }),
                               .sql_server = SqlServerOpener(system)});
}

std::unique_ptr<Recordset> WindowsComponents::NewRecordset() { return NewWindowsRecordset(); }

std::unique_ptr<MailComponent> WindowsComponents::NewMailComponent() {
  System& system = machine_.TheSystem();
  return NewSmtpMailComponent(
      system, machine_.TheCodePages(),
      {.plain_text = PlainTextOfHtml,
       .take_inline_parts = [&system, &converted = converted_](std::wstring& html,
                                                               const std::wstring& path) {
         return TakePictures(html, converted.DocumentOf(path), system);
       }});
}

std::unique_ptr<TextControl> WindowsComponents::NewTextControl() {
  return NewWindowsTextControl(machine_.TheSystem(), machine_.TheCodePages(), &converted_);
}

}  // namespace pxscheduler
