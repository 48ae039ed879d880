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

// The texts of every message, with their merge tokens.
struct MessageTemplates {
  MergeTemplate subject;
  MergeTemplate body;
  MergeTemplate alternative_body;
};

// Called with the result code of each message, in the order of the rows, before the next one is
// sent. `address` is as read from the row.
using OutcomeHandler = std::function<void(const std::wstring& address, std::int16_t result_code)>;

// Sends a message for each row, from the current one on, that is marked for mail and whose address
// has an "@" and differs from the last one used, whatever its case. The rows must be sorted by
// address. While the server handles one message, the next ones are composed.
//
// Returns false where a request to stop ended it early: the message in flight has got its outcome
// by then, no other was begun, and System::Warn has told how far it came.
//
// Raises ItemNotFound (3265) for a missing column, and Overflow (6) for a result code beyond 16
// bits; the rows before the error have got their messages, and `on_outcome` its calls, by then.
bool SendRows(System& system, const Regional& regional, const CodePage& ansi, Recordset& result_set,
              const MessageTemplates& templates, MailComponent& mail,
              const OutcomeHandler& on_outcome);

}  // namespace pxscheduler
