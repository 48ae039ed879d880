#include "data/rows/data_connection.h"

#include <utility>

#include "platform/letter_case.h"
#include "platform/runtime_error.h"

namespace pxscheduler {
namespace {

std::unique_ptr<Session> OpenEngine(const SessionOpeners& openers, ConnectionSettings settings) {
  const auto path = EmbeddedDatabasePath(settings.data_source);
  if (!path) return openers.sql_server(settings);
  settings.data_source = *path;
  return openers.embedded(settings);
}

}  // namespace

DataConnection::DataConnection(SessionOpeners openers) : openers_{std::move(openers)} {}

void DataConnection::Open(const std::wstring& connection_string, const std::wstring& user_id,
                          const std::wstring& password, int /*options*/) {
  if (session_) throw RuntimeError{3705, L"Operation is not allowed when the object is open."};
  ConnectionSettings settings = ReadConnectionString(connection_string);
  if (LowerCase(settings.provider) != L"sqloledb")
    throw RuntimeError{3706, L"Provider cannot be found. It may not be properly installed."};
  if (!user_id.empty()) settings.user_id = user_id;
  if (!password.empty()) settings.password = password;
  session_ = OpenEngine(openers_, std::move(settings));
}

int DataConnection::State() const { return session_ ? kStateOpen : kStateClosed; }

// Every result set is read whole, as kUseClient asks.
void DataConnection::SetCursorLocation(int /*location*/) {}

void DataConnection::Execute(const std::wstring& command_text, int /*options*/) {
  RequireSession().Execute(command_text);
}

std::wstring DataConnection::DefaultDatabase() { return RequireSession().CurrentDatabase(); }

void DataConnection::Close() {
  RequireSession();
  session_.reset();
}

Session* DataConnection::OpenSession() const { return session_.get(); }

Session& DataConnection::RequireSession() const {
  if (!session_) throw ObjectClosed();
  return *session_;
}

}  // namespace pxscheduler
