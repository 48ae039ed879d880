#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "data/rows/connection_settings.h"
#include "data/rows/row_store.h"
#include "platform/runtime_error.h"

namespace pxscheduler {

// One open connection of one database engine; destroying it closes the connection. Every failure is
// a RuntimeError with the engine's own text: kStatementRejected for a statement that the engine
// finds wrong, kProviderFailure for anything else.
class Session {
 public:
  static constexpr std::int32_t kStatementRejected = -2147217900;
  static constexpr std::int32_t kProviderFailure = -2147467259;

  virtual ~Session() = default;

  // Runs a statement to its end and discards its rows.
  virtual void Execute(const std::wstring& sql) = 0;
  // Runs a statement and reads its first row set whole; a store without columns stands for none. An
  // error in the middle of the rows is raised: a result is never cut short.
  virtual RowStore Query(const std::wstring& sql) = 0;
  // The name of the current database, asked for at each call.
  virtual std::wstring CurrentDatabase() = 0;
};

inline RuntimeError ProviderFailure(std::wstring description) {
  return {Session::kProviderFailure, std::move(description)};
}

// Opens a session with a data source, or raises a RuntimeError that says why not.
using SessionOpener = std::function<std::unique_ptr<Session>(const ConnectionSettings&)>;

// How each engine is opened.
struct SessionOpeners {
  SessionOpener embedded;  // data_source is the path of the database file
  SessionOpener sql_server;
};

}  // namespace pxscheduler
