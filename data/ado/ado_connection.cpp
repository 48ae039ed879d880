#include "data/ado/ado_connection.h"

namespace pxscheduler {

void AdoConnection::Open(const std::wstring& connection_string, const std::wstring& user_id,
                         const std::wstring& password, int options) {
  connection_.Call(L"Open", {Variant(connection_string), Variant(user_id), Variant(password),
                             Variant(std::int32_t{options})});
}

int AdoConnection::State() const { return connection_.Get(L"State").ToInteger(); }

void AdoConnection::SetCursorLocation(int location) {
  connection_.Put(L"CursorLocation", Variant(std::int32_t{location}));
}

// The number of affected records is left out; the result set that comes back is dropped at once.
void AdoConnection::Execute(const std::wstring& command_text, int options) {
  connection_.Call(L"Execute",
                   {Variant(command_text), Variant::Omitted(), Variant(std::int32_t{options})});
}

std::wstring AdoConnection::DefaultDatabase() {
  return connection_.Get(L"DefaultDatabase").ToText();
}

void AdoConnection::Close() { connection_.Call(L"Close", {}); }

}  // namespace pxscheduler
