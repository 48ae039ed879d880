#include "platform/windows/components.h"

#include "platform/data/session.h"
#include "platform/html/message_renderings.h"
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
  return NewSmtpMailComponent(system, machine_.TheCodePages(),
                              MessageRenderings(system, converted_));
}

std::unique_ptr<TextControl> WindowsComponents::NewTextControl() {
  return NewWindowsTextControl(machine_.TheSystem(), machine_.TheCodePages(), &converted_);
}

}  // namespace pxscheduler
