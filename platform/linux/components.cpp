#include "platform/linux/components.h"

#include "platform/data/data_connection.h"
#include "platform/data/data_recordset.h"
#include "platform/html/inline_pictures.h"
#include "platform/html/plain_text.h"
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
  return NewSmtpMailComponent(
      system, machine_.TheCodePages(),
      {.plain_text = PlainTextOfHtml,
       .take_inline_parts = [&system, &converted = converted_](std::wstring& html,
                                                               const std::wstring& path) {
         return TakePictures(html, converted.DocumentOf(path), system);
       }});
}

std::unique_ptr<TextControl> LinuxComponents::NewTextControl() {
  return std::make_unique<RichTextControl>(machine_.TheSystem(), machine_.TheCodePages(),
                                           &converted_);
}

}  // namespace pxscheduler
