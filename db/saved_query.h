#pragma once

#include <string>

#include "data/connection.h"
#include "data/recordset.h"
#include "platform/code_page.h"
#include "platform/regional.h"

namespace pxscheduler {

// The SQL text of the saved query of that name: the user's own where a login is given (user 1, or a
// user with the permission), else the shared one. "" where there is none or its text is Null.
// `result_set` is closed before and after. Raises the errors of Recordset::Open, and ItemNotFound.
std::wstring GetSavedQuery(const CodePage& ansi, const Regional& regional, Connection& connection,
                           Recordset& result_set, const std::wstring& query_name,
                           const std::wstring& user_login);

}  // namespace pxscheduler
