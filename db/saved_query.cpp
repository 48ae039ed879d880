#include "db/saved_query.h"

#include "config/helper_library.h"
#include "data/value.h"

namespace pxscheduler {

std::wstring GetSavedQuery(const CodePage& ansi, const Regional& regional, Connection& connection,
                           Recordset& result_set, const std::wstring& query_name,
                           const std::wstring& user_login) {
  const std::wstring owner = IsBlank(user_login)
                                 ? L" AND UserID=0"
                                 : L" AND UserID=(SELECT UserID FROM Users WHERE (UserID=1 OR "
                                   L"SUBSTRING(Permissions,200,1)='1') AND Login=" +
                                       Quote(ansi, user_login) + L")";
  const std::wstring sql = L"SELECT QueryString FROM MarketingQueries WHERE QueryName=" +
                           Quote(ansi, query_name) + owner;

  result_set.Open(sql, connection, Connection::kOptionUnspecified, Connection::kOptionUnspecified,
                  Connection::kOptionUnspecified);
  std::wstring query_text;
  if (!result_set.EndOfFile()) query_text = TextOf(regional, result_set.Fields(L"QueryString"));
  result_set.Close();
  return query_text;
}

}  // namespace pxscheduler
