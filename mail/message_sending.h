#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "compose/merge_fields.h"
#include "data/recordset.h"
#include "delivery/mail_component.h"
#include "platform/code_page.h"
#include "platform/regional.h"

namespace pxscheduler {

// Composes the current row's message in `mail`, to be sent in its turn, and returns its address as
// read from the row. Nothing for a row that gets no message: one not marked for mail, an address
// without "@", or the same address without regard to case as `last_address`, which becomes the
// lower-cased address of every row that gets one. Raises ItemNotFound (3265) for a missing column.
std::optional<std::wstring> ComposeRow(const Regional& regional, const CodePage& ansi,
                                       const Recordset& result_set,
                                       const MessageTemplates& templates, MailComponent& mail,
                                       std::wstring& last_address);

// The result code of the message that `mail` sent last. Raises Overflow (6) beyond 16 bits.
std::int16_t AwaitResultCode(MailComponent& mail);

}  // namespace pxscheduler
