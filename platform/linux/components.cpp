#include "platform/linux/components.h"

#include "platform/data/data_connection.h"
#include "platform/data/data_recordset.h"
#include "platform/html/message_renderings.h"
#include "platform/odbc/sql_server_session.h"
#include "platform/rtf/rich_text_control.h"
#include "platform/smtp/smtp_mail_component.h"
#include "platform/sqlite/sqlite_session.h"

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
  return NewSmtpMailComponent(system, machine_.TheCodePages(),
                              MessageRenderings(system, converted_));
}

std::unique_ptr<TextControl> LinuxComponents::NewTextControl() {
  return std::make_unique<RichTextControl>(machine_.TheSystem(), machine_.TheCodePages(),
                                           &converted_);
}

}  // namespace pxscheduler
