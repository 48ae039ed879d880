#pragma once

#include <memory>
#include <string>

#include "data/connection.h"
#include "data/rows/session.h"

namespace pxscheduler {

// A connection of the provider "SQLOLEDB", opened by the engine that its data source belongs to.
// Open raises 3705 while it is open already, and 3706 for any other provider.
class DataConnection : public Connection {
 public:
  explicit DataConnection(SessionOpeners openers);

  void Open(const std::wstring& connection_string, const std::wstring& user_id,
            const std::wstring& password, int options) override;
  int State() const override;
  void SetCursorLocation(int location) override;
  void Execute(const std::wstring& command_text, int options) override;
  std::wstring DefaultDatabase() override;
  void Close() override;

  // The session of the open connection, null while closed. Owned by the connection.
  Session* OpenSession() const;

 private:
  Session& RequireSession() const;

  SessionOpeners openers_;
  std::unique_ptr<Session> session_;
};

}  // namespace pxscheduler
