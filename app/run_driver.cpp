#include "app/run_driver.h"

#include <cstdint>
#include <memory>
#include <string>

#include "app/command_line.h"
#include "app/run_log.h"
#include "compose/body_template.h"
#include "compose/merge_fields.h"
#include "config/data_folder.h"
#include "config/helper_library.h"
#include "db/database.h"
#include "db/saved_query.h"
#include "mail/mail_settings.h"
#include "mail/message_sending.h"
#include "mail/smtp_errors.h"
#include "platform/runtime_error.h"
#include "query/date_macros.h"

namespace pxscheduler {
namespace {

constexpr wchar_t kUsage[] =
    L"Usage: PXScheduler /U[user name] /Q[saved query name] /S[subject] /F[message body file]";

// In one append, so that a run that writes to the same log at the same time never stands between an
// address and what failed.
void LogOutcome(AppendFile& log, const std::wstring& address, std::int16_t result_code) {
  if (result_code == 0)
    WriteLogLine(log, L"Sent: " + address);
  else
    WriteLogLine(log, L"Failed: " + address + L"\r\n" + std::wstring{SmtpErrorText(result_code)});
}

// Prepares the mail component and the message body, opens the query and sends a message for each
// row. `log` is null where the run is not logged. False where a request to stop came between.
bool SendMessages(const Platform& platform, const CommandLine& switches, const std::wstring& sql,
                  Connection& connection, Recordset& result_set, AppendFile* log) {
  const CodePage& ansi = platform.ansi;
  const std::unique_ptr<MailComponent> mail = platform.components.NewMailComponent();
  ApplyMailSettings(platform.system, platform.registry, ansi, platform.passwords, connection,
                    *mail);
  const BodyTexts texts = PrepareMessageBody(
      platform.system, ansi, [&platform] { return platform.components.NewTextControl(); }, *mail,
      switches.body_file);
  const MessageTemplates templates{PrepareMergeTemplate(ansi, switches.subject),
                                   PrepareMergeTemplate(ansi, texts.body),
                                   PrepareMergeTemplate(ansi, texts.alternative)};

  WithDetails([&sql] { return L"The query, with its macros expanded: " + sql; },
              [&] {
                result_set.Open(sql, connection, Connection::kOptionUnspecified,
                                Connection::kOptionUnspecified, Connection::kOptionUnspecified);
              });
  result_set.SetSort(L"Email");
  const bool is_complete =
      SendRows(platform.system, platform.regional, ansi, result_set, templates, *mail,
               [log](const std::wstring& address, std::int16_t result_code) {
                 if (log != nullptr) LogOutcome(*log, address, result_code);
               });
  result_set.Close();
  return is_complete;
}

void WarnOfMissingQuery(System& system, const CommandLine& switches) {
  system.Warn(L"No saved query \"" + switches.query_name + L"\" with a text was found " +
              (IsBlank(switches.user_login) ? L"among those of everybody (no \"/U\")"
                                            : L"of the user \"" + switches.user_login + L"\"") +
              L": nothing is sent.");
}

// Fetches the saved query, expands its macros and sends its messages, none for a blank query. False
// where a request to stop came between.
bool RunQuery(const Platform& platform, const CommandLine& switches, AppendFile* log) {
  const std::unique_ptr<Connection> connection = platform.components.NewConnection();
  const std::unique_ptr<Recordset> result_set = platform.components.NewRecordset();
  const std::wstring dsn = GetRegValue(platform.registry, platform.ansi, RegistryRoot::kCurrentUser,
                                       kProductKey, L"DSN", L"");
  OpenDatabase(platform.system, platform.registry, platform.ansi, platform.passwords, *connection,
               dsn);
  connection->SetCursorLocation(Connection::kUseClient);

  const std::wstring saved_query =
      GetSavedQuery(platform.ansi, platform.regional, *connection, *result_set, switches.query_name,
                    switches.user_login);
  if (saved_query.empty()) WarnOfMissingQuery(platform.system, switches);
  const std::wstring sql =
      ExpandDateMacros(platform.system, platform.regional, platform.ansi, saved_query);
  const bool is_complete =
      IsBlank(sql) || SendMessages(platform, switches, sql, *connection, *result_set, log);
  connection->Close();
  return is_complete;
}

}  // namespace

int Main(const Platform& platform) {
  const std::wstring command_line = platform.system.CommandLine();
  const std::wstring data_folder = GetDataFolder(platform.system, platform.registry, platform.ansi);
  std::unique_ptr<AppendFile> log;
  if (IsLoggingOn(command_line)) {
    log = OpenRunLog(platform.system, data_folder);
    WriteStartBlock(*log, platform.system, platform.regional);
  }

  const CommandLine switches = ParseCommandLine(platform.ansi, command_line);
  if ((IsBlank(switches.query_name) | IsBlank(switches.body_file) | IsBlank(switches.subject)) !=
      0) {
    platform.system.ShowMessageBox(kApplicationTitle, kUsage);
    if (log) WriteLogLine(*log, L"Invalid parameters: " + command_line);
  } else {
    if (log) WriteLogLine(*log, L"Running query: " + switches.query_name);
    if (!RunQuery(platform, switches, log.get())) return platform.system.StopStatus().value_or(0);
  }

  if (log) WriteEndBlock(*log, platform.system, platform.regional);
  return 0;
}

}  // namespace pxscheduler
