#include "app/linux/components.h"

#include "data/odbc/sql_server_session.h"
#include "data/rows/data_connection.h"
#include "data/rows/data_recordset.h"
#include "data/sqlite/sqlite_session.h"
#include "delivery/smtp/smtp_mail_component.h"
#include "letters/component/rich_text_control.h"
#include "letters/letter_reader.h"

namespace pxscheduler {

std::unique_ptr<Connection> LinuxComponents::NewConnection() {
  return std::make_unique<DataConnection>(SessionOpeners{
      .embedded = SqliteOpener([&system = machine_.TheSystem()] { return system.Now().local; }),
      .sql_server = SqlServerOpener(machine_.TheSystem())});
}

std::unique_ptr<Recordset> LinuxComponents::NewRecordset() {
  return std::make_unique<DataRecordset>();
}

std::unique_ptr<MailComponent> LinuxComponents::NewMailComponent() {
  System& system = machine_.TheSystem();
  return NewSmtpMailComponent(system, [this, &system](const std::wstring& path) {
    return ReadLetter(system, machine_.TheCodePages(), converted_, path);
  });
}

std::unique_ptr<TextControl> LinuxComponents::NewTextControl() {
  return std::make_unique<RichTextControl>(machine_.TheSystem(), machine_.TheCodePages(),
                                           &converted_);
}

}  // namespace pxscheduler
