#include "mail/message_sending.h"

#include <limits>
#include <string_view>
#include <utility>

#include "data/value.h"
#include "platform/letter_case.h"
#include "platform/runtime_error.h"

namespace pxscheduler {

std::optional<std::wstring> ComposeRow(const Regional& regional, const CodePage& ansi,
                                       const Recordset& result_set,
                                       const MessageTemplates& templates, MailComponent& mail,
                                       std::wstring& last_address) {
  using namespace std::string_view_literals;
  std::wstring address = TextOf(regional, result_set.Fields(L"Email"sv));
  const bool is_marked = IsTrue(result_set.Fields(L"SendEmail"sv));
  std::wstring lower_address = LowerCase(address);
  if (!is_marked || address.find(L'@') == std::wstring::npos || lower_address == last_address)
    return std::nullopt;
  last_address = std::move(lower_address);

  MergeValues values = ReadMergeValues(regional, result_set, address);
  const std::wstring full_name = FullNameOf(values);
  const ValuesInCodePage merged_values = InCodePage(ansi, std::move(values));
  const MergedText subject = Merge(templates.subject, merged_values);
  MergedText body = Merge(templates.body, merged_values);
  MergedText alternative_body = Merge(templates.alternative_body, merged_values);
  mail.SetSubject(Joined(subject.pieces));
  mail.SetBodyText(std::move(body.pieces));
  mail.SetAlternativeBodyText(std::move(alternative_body.pieces));

  mail.ResetRecipients(MailComponent::kAllRecipients);
  mail.AddRecipient(full_name, address, MailComponent::kRecipientTo);
  mail.Compose();
  return address;
}

std::int16_t AwaitResultCode(MailComponent& mail) {
  using Limits = std::numeric_limits<std::int16_t>;
  const std::int32_t code = mail.AwaitResult();
  if (code < Limits::min() || code > Limits::max()) throw Overflow();
  return static_cast<std::int16_t>(code);
}

}  // namespace pxscheduler
