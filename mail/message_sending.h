#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "compose/merge_fields.h"
#include "data/recordset.h"
#include "delivery/mail_component.h"
#include "platform/code_page.h"
#include "platform/regional.h"
#include "platform/system.h"

namespace pxscheduler {

// The texts that every message starts from.
struct MessageTemplates {
  MergeTemplate subject;
  MergeTemplate body;
  MergeTemplate alternative_body;
};

// Is told the result code of each message, in the order of the rows, before the next one is sent.
// `address` is as read from the row.
using OutcomeHandler = std::function<void(const std::wstring& address, std::int16_t result_code)>;

// Sends a message to each row from the current one on that is marked for mail and whose address has
// an "@" and differs, without regard to case, from the last one that got a message. The rows must
// be sorted by address. While the server considers one message, the next ones are composed.
//
// Raises ItemNotFound (3265) for a missing column, and Overflow (6) for a result code beyond 16
// bits. The messages of the rows before the error have then been sent and their outcomes told.
void SendRows(System& system, const Regional& regional, const CodePage& ansi, Recordset& result_set,
              const MessageTemplates& templates, MailComponent& mail,
              const OutcomeHandler& on_outcome);

}  // namespace pxscheduler
