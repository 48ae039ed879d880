#include "data/ado/data_access.h"

#include <optional>
#include <string>
#include <utility>

#include "data/ado/ado_connection.h"
#include "data/ado/ado_recordset.h"
#include "data/rows/connection_settings.h"
#include "data/rows/data_connection.h"
#include "data/rows/data_recordset.h"
#include "platform/letter_case.h"
#include "platform/runtime_error.h"
#include "text/text.h"

namespace pxscheduler {
namespace {

enum class DataAccess { kInstalled, kAdo, kOdbc };

DataAccess ReadDataAccess(const System& system) {
  const std::wstring value = system.EnvironmentVariable(L"PXSCHEDULER_DATA_ACCESS");
  const std::wstring name = LowerCase(TrimBlanks(value));
  if (name.empty()) return DataAccess::kInstalled;
  if (name == L"ado") return DataAccess::kAdo;
  if (name == L"odbc") return DataAccess::kOdbc;
  RuntimeError error = InvalidProcedureCall();
  error.description +=
      L": PXSCHEDULER_DATA_ACCESS is \"" + value + L"\", but can only be \"ado\" or \"odbc\".";
  throw error;
}

class WindowsConnection : public Connection {
 public:
  WindowsConnection(DataAccess access, SessionOpeners openers)
      : access_(access), data_(std::move(openers)) {}

  void Open(const std::wstring& connection_string, const std::wstring& user_id,
            const std::wstring& password, int options) override {
    Choose(ReadConnectionString(connection_string));
    chosen_->Open(connection_string, user_id, password, options);
  }
  int State() const override { return chosen_ != nullptr ? chosen_->State() : kStateClosed; }
  void SetCursorLocation(int location) override {
    cursor_location_ = location;
    if (chosen_ != nullptr) chosen_->SetCursorLocation(location);
  }
  void Execute(const std::wstring& command_text, int options) override {
    RequireChosen(ObjectClosed()).Execute(command_text, options);
  }
  std::wstring DefaultDatabase() override {
    return RequireChosen(ObjectClosed()).DefaultDatabase();
  }
  void Close() override { RequireChosen(ObjectClosed()).Close(); }

  // What this connection is made of. Raises why it could not be made, or `otherwise` before the
  // first Open.
  Connection& RequireChosen(const RuntimeError& otherwise) {
    if (chosen_ == nullptr) throw failure_.value_or(otherwise);
    return *chosen_;
  }

 private:
  bool PrefersAdo(const ConnectionSettings& settings) const {
    if (EmbeddedDatabasePath(settings.data_source)) return false;
    if (access_ != DataAccess::kInstalled) return access_ == DataAccess::kAdo;
    return FindClass(AdoConnection::kProgramId) && FindClass(settings.provider);
  }

  void Choose(const ConnectionSettings& settings) {
    const bool prefers_ado = PrefersAdo(settings);
    // A second attempt is made on the same object, with no other call before it.
    if (chosen_ != nullptr && (chosen_ != &data_) == prefers_ado) return;
    Connection* const before = std::exchange(chosen_, nullptr);
    failure_.reset();
    if (prefers_ado) {
      try {
        if (!ado_) ado_.emplace();
      } catch (const RuntimeError& error) {
        failure_ = error;
        throw;
      }
      chosen_ = &*ado_;
    } else {
      chosen_ = &data_;
    }
    if (chosen_ != before && cursor_location_) chosen_->SetCursorLocation(*cursor_location_);
  }

  DataAccess access_;
  DataConnection data_;
  std::optional<AdoConnection> ado_;     // made when it is first needed
  Connection* chosen_ = nullptr;         // one of these two
  std::optional<RuntimeError> failure_;  // why neither is chosen
  std::optional<int> cursor_location_;
};

class WindowsRecordset : public Recordset {
 public:
  void Open(const std::wstring& source, Connection& connection, int cursor_type, int lock_type,
            int options) override {
    auto* windows_connection = dynamic_cast<WindowsConnection*>(&connection);
    if (windows_connection == nullptr) throw ConnectionClosed();
    Connection& chosen = windows_connection->RequireChosen(ConnectionClosed());
    if (made_for_ != &chosen) {
      rows_ = NewRecordsetFor(chosen);
      made_for_ = &chosen;
    }
    rows_->Open(source, chosen, cursor_type, lock_type, options);
  }
  bool EndOfFile() const override { return RequireRows().EndOfFile(); }
  std::size_t RecordCount() const override { return RequireRows().RecordCount(); }
  Value Fields(std::wstring_view name) const override { return RequireRows().Fields(name); }
  void SetSort(const std::wstring& column) override { RequireRows().SetSort(column); }
  void MoveNext() override { RequireRows().MoveNext(); }
  void Close() override { RequireRows().Close(); }

 private:
  static std::unique_ptr<Recordset> NewRecordsetFor(const Connection& chosen) {
    if (dynamic_cast<const AdoConnection*>(&chosen) != nullptr)
      return std::make_unique<AdoRecordset>();
    return std::make_unique<DataRecordset>();
  }
  Recordset& RequireRows() const {
    if (!rows_) throw ObjectClosed();
    return *rows_;
  }

  std::unique_ptr<Recordset> rows_;
  const Connection* made_for_ = nullptr;
};

}  // namespace

std::unique_ptr<Connection> NewWindowsConnection(const System& system, SessionOpeners openers) {
  return std::make_unique<WindowsConnection>(ReadDataAccess(system), std::move(openers));
}

std::unique_ptr<Recordset> NewWindowsRecordset() { return std::make_unique<WindowsRecordset>(); }

}  // namespace pxscheduler
