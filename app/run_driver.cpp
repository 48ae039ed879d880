#include "app/run_driver.h"

#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

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
#include "query/date_macros.h"

namespace pxscheduler {
namespace {

constexpr wchar_t kUsage[] =
    L"Usage: PXScheduler /U[user name] /Q[saved query name] /S[subject] /F[message body file]";

constexpr std::size_t kMostRowsAtOnce = 64;  // with the rows that get no message

void LogOutcome(AppendFile& log, const std::wstring& address, std::int16_t result_code) {
  if (result_code == 0) {
    WriteLogLine(log, L"Sent: " + address);
  } else {
    WriteLogLine(log, L"Failed: " + address);
    WriteLogLine(log, SmtpErrorText(result_code));
  }
}

// The rows that are composed together: the address of each, nothing for one that gets no message.
struct ComposedRows {
  std::vector<std::optional<std::wstring>> addresses;
  std::exception_ptr error;  // what ended them; the rows before it still get their messages
};

// Composes the current row and those after it, as many as `mail` takes at once, which is faster
// than one by one: the processor has what it needs at hand.
ComposedRows ComposeRows(const Platform& platform, const MessageTemplates& templates,
                         Recordset& result_set, MailComponent& mail, std::wstring& last_address) {
  ComposedRows rows;
  try {
    do {
      rows.addresses.push_back(
          ComposeRow(platform.regional, platform.ansi, result_set, templates, mail, last_address));
      result_set.MoveNext();
    } while (rows.addresses.size() < kMostRowsAtOnce && mail.CanComposeMore() &&
             !result_set.EndOfFile());
  } catch (...) {
    rows.error = std::current_exception();
  }
  return rows;
}

// Sends every row its message, in the order of the rows. While the server considers one message,
// the next ones are composed; none is sent before the outcome of the one before is known and
// logged. `log` is null when the run is not logged.
void SendRows(const Platform& platform, const MessageTemplates& templates, Recordset& result_set,
              MailComponent& mail, AppendFile* log) {
  RunProgress progress{.rows = result_set.RecordCount()};
  const auto row_is_done = [&] {
    ++progress.rows_done;
    platform.system.ShowProgress(progress);
  };
  std::optional<std::wstring> sent_address;  // whose outcome is not known yet
  const auto settle = [&] {
    if (!sent_address) return;
    const std::wstring address = *std::exchange(sent_address, std::nullopt);
    const std::int16_t result_code = AwaitResultCode(mail);
    if (log != nullptr) LogOutcome(*log, address, result_code);
    ++(result_code == 0 ? progress.sent : progress.failed);
    row_is_done();
  };
  std::wstring last_address;
  std::exception_ptr error;
  while (!error && !result_set.EndOfFile()) {
    ComposedRows rows = ComposeRows(platform, templates, result_set, mail, last_address);
    for (std::optional<std::wstring>& address : rows.addresses) {
      if (address) {
        settle();
        mail.Send();
        sent_address = std::move(address);
      } else {
        row_is_done();
      }
    }
    error = rows.error;
  }
  settle();
  if (error) std::rethrow_exception(error);
}

// Prepares the mail component and the letter, opens the query and sends its rows their messages.
void SendMessages(const Platform& platform, const CommandLine& switches, const std::wstring& sql,
                  Connection& connection, Recordset& result_set, AppendFile* log) {
  const std::unique_ptr<MailComponent> mail = platform.components.NewMailComponent();
  ApplyMailSettings(platform.registry, platform.ansi, platform.passwords, connection, *mail);
  const BodyTexts texts = PrepareMessageBody(
      platform.system, platform.ansi, [&] { return platform.components.NewTextControl(); }, *mail,
      switches.body_file);
  const MessageTemplates templates{PrepareMergeTemplate(platform.ansi, switches.subject),
                                   PrepareMergeTemplate(platform.ansi, texts.body),
                                   PrepareMergeTemplate(platform.ansi, texts.alternative)};

  result_set.Open(sql, connection, Connection::kOptionUnspecified, Connection::kOptionUnspecified,
                  Connection::kOptionUnspecified);
  result_set.SetSort(L"Email");
  SendRows(platform, templates, result_set, *mail, log);
  result_set.Close();
}

// Fetches the saved query, resolves its macros and sends its messages. A query that is blank sends
// nothing.
void RunQuery(const Platform& platform, const CommandLine& switches, AppendFile* log) {
  const std::unique_ptr<Connection> connection = platform.components.NewConnection();
  const std::unique_ptr<Recordset> result_set = platform.components.NewRecordset();
  const std::wstring dsn = GetRegValue(platform.registry, platform.ansi, RegistryRoot::kCurrentUser,
                                       kProductKey, L"DSN", L"");
  OpenDatabase(platform.registry, platform.ansi, platform.passwords, *connection, dsn);
  connection->SetCursorLocation(Connection::kUseClient);

  const std::wstring saved_query =
      GetSavedQuery(platform.ansi, platform.regional, *connection, *result_set, switches.query_name,
                    switches.user_login);
  const std::wstring sql =
      ExpandDateMacros(platform.system, platform.regional, platform.ansi, saved_query);
  if (!IsBlank(sql)) SendMessages(platform, switches, sql, *connection, *result_set, log);
  connection->Close();
}

}  // namespace

void Main(const Platform& platform) {
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
    RunQuery(platform, switches, log.get());
  }

  if (log) WriteEndBlock(*log, platform.system, platform.regional);
  CloseRunLog(log);
}

}  // namespace pxscheduler
