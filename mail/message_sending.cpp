#include "mail/message_sending.h"

#include <exception>
#include <limits>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "data/value.h"
#include "platform/letter_case.h"
#include "platform/runtime_error.h"

namespace pxscheduler {
namespace {

constexpr std::size_t kMostRowsAtOnce = 64;  // including rows that get no message

// Composes the current row's message and returns its address; nothing for a row that gets none.
// `last_address` is the lower-cased address of the last row that got one.
std::optional<std::wstring> ComposeRow(const Regional& regional, const CodePage& ansi,
                                       const Recordset& result_set,
                                       const MessageTemplates& templates, MailComponent& mail,
                                       std::wstring& last_address) {
  using namespace std::string_view_literals;
  std::wstring address = TextOf(regional, result_set.Fields(L"Email"sv));
  const Value mark = result_set.Fields(L"SendEmail"sv);
  const bool is_marked = WithDetails(
      [&] {
        return L"\"SendEmail\" of the client \"" + address +
               L"\" is neither a number nor True or " + L"False: \"" + TextOf(regional, mark) +
               L"\".";
      },
      [&] { return IsTrue(mark); });
  std::wstring lower_address = LowerCase(address);
  if (!is_marked || address.find(L'@') == std::wstring::npos || lower_address == last_address)
    return std::nullopt;
  last_address = std::move(lower_address);

  MergeValues row = ReadMergeValues(regional, result_set, address);
  const std::wstring full_name = FullNameOf(row);
  const ValuesInCodePage values = InCodePage(ansi, std::move(row));
  const auto& [subject, body, alternative_body] = templates;
  if (CanFillPlaces(subject, values) && CanFillPlaces(body, values) &&
      CanFillPlaces(alternative_body, values))
    mail.Compose(full_name, address, values.texts);
  else
    mail.ComposeTexts(full_name, address,
                      {.subject = MergeInSequence(subject.text, values.texts),
                       .body = MergeInSequence(body.text, values.texts),
                       .alternative_body = MergeInSequence(alternative_body.text, values.texts)});
  return address;
}

// Rows that were composed together.
struct ComposedRows {
  std::vector<std::optional<std::wstring>> addresses;  // nothing for a row that gets no message
  std::exception_ptr error;  // of the row behind them; they still get their messages
};

// Composes the current row and those after it, as many as `mail` takes at once. That is faster than
// one by one, because code and data stay in the processor's caches.
ComposedRows ComposeRows(const Regional& regional, const CodePage& ansi, Recordset& result_set,
                         const MessageTemplates& templates, MailComponent& mail,
                         std::wstring& last_address) {
  ComposedRows rows;
  try {
    do {
      rows.addresses.push_back(
          ComposeRow(regional, ansi, result_set, templates, mail, last_address));
      result_set.MoveNext();
    } while (rows.addresses.size() < kMostRowsAtOnce && mail.CanComposeMore() &&
             !result_set.EndOfFile());
  } catch (...) {
    rows.error = std::current_exception();
  }
  return rows;
}

std::int16_t AwaitResultCode(MailComponent& mail) {
  using Limits = std::numeric_limits<std::int16_t>;
  const std::int32_t code = mail.AwaitResult();
  if (code < Limits::min() || code > Limits::max()) throw Overflow();
  return static_cast<std::int16_t>(code);
}

}  // namespace

bool SendRows(System& system, const Regional& regional, const CodePage& ansi, Recordset& result_set,
              const MessageTemplates& templates, MailComponent& mail,
              const OutcomeHandler& on_outcome) {
  mail.SetMessageTemplate({.subject = templates.subject.parsed,
                           .body = templates.body.parsed,
                           .alternative_body = templates.alternative_body.parsed});
  system.HoldStopRequests();
  RunProgress progress{.rows = result_set.RecordCount()};
  const auto count_row = [&] {
    ++progress.rows_done;
    system.ShowProgress(progress);
  };
  std::optional<std::wstring> sent_address;  // until its outcome is known
  const auto await_outcome = [&] {
    if (!sent_address) return;
    const std::wstring address = *std::exchange(sent_address, std::nullopt);
    const std::int16_t result_code = AwaitResultCode(mail);
    on_outcome(address, result_code);
    ++(result_code == 0 ? progress.sent : progress.failed);
    count_row();
  };
  const auto tell_of_stop = [&] {
    system.Warn(L"Stopped on request: " + std::to_wstring(progress.sent) + L" messages sent, " +
                std::to_wstring(progress.failed) + L" failed, " +
                std::to_wstring(progress.rows - progress.rows_done) + L" of " +
                std::to_wstring(progress.rows) + L" clients not reached.");
  };
  std::wstring last_address;
  std::exception_ptr error;
  while (!error && !result_set.EndOfFile()) {
    ComposedRows rows = ComposeRows(regional, ansi, result_set, templates, mail, last_address);
    for (std::optional<std::wstring>& address : rows.addresses) {
      if (address) {
        await_outcome();
        if (system.StopStatus()) {
          tell_of_stop();
          return false;
        }
        mail.Send();
        sent_address = std::move(address);
      } else {
        count_row();
      }
    }
    error = rows.error;
  }
  await_outcome();
  if (error) std::rethrow_exception(error);
  return true;
}

}  // namespace pxscheduler
