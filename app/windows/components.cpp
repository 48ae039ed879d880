#include "app/windows/components.h"

#include "data/ado/data_access.h"
#include "data/odbc/sql_server_session.h"
#include "data/rows/session.h"
#include "data/sqlite/sqlite_session.h"
#include "delivery/smtp/smtp_mail_component.h"
#include "letters/component/rich_text_component.h"
#include "letters/letter_reader.h"

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
  return NewSmtpMailComponent(system, [this, &system](const std::wstring& path) {
    return ReadLetter(system, machine_.TheCodePages(), converted_, path);
  });
}

std::unique_ptr<TextControl> WindowsComponents::NewTextControl() {
  return NewWindowsTextControl(machine_.TheSystem(), machine_.TheCodePages(), &converted_);
}

}  // namespace pxscheduler
