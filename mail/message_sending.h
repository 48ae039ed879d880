#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "compose/merge_fields.h"
#include "platform/code_page.h"
#include "platform/mail_component.h"
#include "platform/recordset.h"
#include "platform/regional.h"

namespace pxscheduler {

struct RowOutcome {
  std::wstring address;  // as read from the row
  std::int16_t result_code;
};

// Sends the current row's message. Nothing for a row that gets none: one not marked for mail, an
// address without "@", or the same address without regard to case as `last_address`, which becomes
// the lower-cased address of every row that is sent. Raises ItemNotFound (3265) for a missing
// column and Overflow (6) for a result code beyond 16 bits.
std::optional<RowOutcome> SendRow(const Regional& regional, const CodePage& ansi,
                                  const Recordset& result_set, const MessageTemplates& templates,
                                  MailComponent& mail, std::wstring& last_address);

}  // namespace pxscheduler
