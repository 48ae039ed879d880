#include "data/sqlite/sqlite_session.h"

#include <sqlite3.h>

#include <array>
#include <charconv>
#include <chrono>
#include <filesystem>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "data/sqlite/database_file.h"
#include "data/sqlite/sql_conversion.h"
#include "data/sqlite/sql_cursor.h"
#include "data/sqlite/sql_date_text.h"
#include "data/sqlite/sql_dates.h"
#include "data/sqlite/sql_functions.h"
#include "data/sqlite/sql_parser.h"
#include "data/sqlite/sql_schema.h"
#include "data/sqlite/sql_settings.h"
#include "data/sqlite/sql_writer.h"
#include "text/text.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

struct FinalizeStatement {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Statement = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

// Nothing but reading is allowed once a session is open.
int Authorize(void* /*unused*/, int action, const char* /*first*/, const char* /*second*/,
              const char* /*database*/, const char* /*trigger*/) {
  switch (action) {
    case SQLITE_SELECT:
    case SQLITE_READ:
    case SQLITE_FUNCTION:
    case SQLITE_RECURSIVE:
      return SQLITE_OK;
    default:
      return SQLITE_DENY;
  }
}

std::string_view TextOfColumn(sqlite3_stmt* statement, int column) {
  const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
  const int size = sqlite3_column_bytes(statement, column);
  if (text == nullptr && sqlite3_errcode(sqlite3_db_handle(statement)) == SQLITE_NOMEM)
    throw OutOfMemory();
  return text == nullptr ? std::string_view{}
                         : std::string_view{text, static_cast<std::size_t>(size)};
}

void AppendDecimal(double number, RowStore& rows) {
  std::array<char, 40> buffer{};
  const auto written =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, std::chars_format::fixed);
  if (written.ec == std::errc{})
    rows.AppendDecimal({buffer.data(), written.ptr});
  else
    rows.AppendDouble(number);
}

void AppendDate(std::string_view text, SqlKind kind, RowStore& rows) {
  const std::optional<SqlMoment> stored = ReadStoredDate(text);
  if (!stored || *stored < std::chrono::sys_days{std::chrono::year{100} / 1 / 1})
    return rows.AppendText(text);
  const SqlMoment moment = DateInColumn(text, kind);
  const auto date = std::chrono::floor<std::chrono::days>(moment);
  rows.AppendDateTime({date, std::chrono::floor<std::chrono::seconds>(moment - date)});
}

void AppendColumn(sqlite3_stmt* statement, int column, SqlKind kind, RowStore& rows) {
  switch (sqlite3_column_type(statement, column)) {
    case SQLITE_NULL:
      return rows.AppendNull();
    case SQLITE_INTEGER: {
      const std::int64_t number = sqlite3_column_int64(statement, column);
      if (kind == SqlKind::kBit) return rows.AppendBool(number != 0);
      if (kind == SqlKind::kDecimal || kind == SqlKind::kMoney)
        return rows.AppendDecimal(std::to_string(number));
      if (kind == SqlKind::kFloat) return rows.AppendDouble(static_cast<double>(number));
      return rows.AppendInteger(number);
    }
    case SQLITE_FLOAT: {
      const double number = sqlite3_column_double(statement, column);
      if (kind == SqlKind::kBit) return rows.AppendBool(number != 0);
      if (kind == SqlKind::kDecimal || kind == SqlKind::kMoney) return AppendDecimal(number, rows);
      return rows.AppendDouble(number);
    }
    default: {
      const std::string_view text = TextOfColumn(statement, column);
      return IsDateKind(kind) ? AppendDate(text, kind, rows) : rows.AppendText(text);
    }
  }
}

class SqliteSession : public Session {
 public:
  SqliteSession(const ConnectionSettings& settings, std::function<DateTime()> local_time)
      : local_time_{std::move(local_time)}, path_{settings.data_source} {
    auto [connection, is_immutable] = OpenDatabaseFile(path_);
    database_ = std::move(connection);
    is_immutable_ = is_immutable;
    name_ = TrimBlanks(settings.initial_catalog).empty() ? DatabaseFileStem(settings.data_source)
                                                         : settings.initial_catalog;
    if (!AddSqlFunctions(database_.get())) throw OutOfMemory();
    schema_ = ReadSchema(database_.get());
    schema_.database = ToUtf8(name_);
    sqlite3_set_authorizer(database_.get(), Authorize, nullptr);
  }

  void Execute(const std::wstring& sql) override { Run(sql, nullptr); }

  RowStore Query(const std::wstring& sql) override {
    RowStore rows;
    Run(sql, &rows);
    return rows;
  }

  std::wstring CurrentDatabase() override { return name_; }

 private:
  // Runs one statement after the other, and into `rows`, if it is given, the first.
  void Run(const std::wstring& sql, RowStore* rows) {
    const DateTime local = local_time_();
    const SqlMoment now = local.date + local.time_of_day;
    try {
      SqlCursor cursor(ToUtf8(sql));
      for (TakeSettingsAt(cursor); !cursor.IsAtEnd(); TakeSettingsAt(cursor)) {
        const SqlQuery query = ParseStatement(cursor);
        const WrittenSql written = WriteQuery(query, schema_, cursor, now);
        const Statement statement = Prepare(written.sql);
        if (rows != nullptr && rows->ColumnCount() == 0)
          *rows = Fetch(statement.get(), written.columns);
        else
          Finish(statement.get());
      }
    } catch (const SqlSyntaxError& error) {
      throw RuntimeError{kStatementRejected, FromUtf8(error.description)};
    } catch (const SqlFunctionError& error) {
      throw RuntimeError{kStatementRejected, FromUtf8(error.description)};
    }
    if (is_immutable_ && HasWriteAheadLog(path_))
      throw RuntimeError{kProviderFailure, L"A program began to write to the database file \"" +
                                               path_ + L"\" while it was read."};
  }

  void TakeSettingsAt(SqlCursor& cursor) {
    const std::optional<std::int64_t> timeout = TakeSettings(cursor);
    if (timeout)
      sqlite3_busy_timeout(database_.get(), *timeout < 0 ? std::numeric_limits<int>::max()
                                                         : static_cast<int>(*timeout));
  }

  Statement Prepare(const std::string& sql) {
    if (!std::in_range<int>(sql.size())) throw OutOfMemory();
    sqlite3_stmt* prepared = nullptr;
    const int result = sqlite3_prepare_v2(database_.get(), sql.data(), static_cast<int>(sql.size()),
                                          &prepared, nullptr);
    Statement statement{prepared};
    if (result != SQLITE_OK) throw SqliteError(database_.get());
    return statement;
  }

  RowStore Fetch(sqlite3_stmt* statement, const std::vector<SqlColumn>& columns) {
    std::vector<std::wstring> names;
    names.reserve(columns.size());
    for (const SqlColumn& column : columns) names.push_back(FromUtf8(column.name));
    RowStore rows{std::move(names)};
    while (Step(statement)) {
      int at = 0;
      for (const SqlColumn& column : columns) AppendColumn(statement, at++, column.kind, rows);
      rows.EndRow();
    }
    return rows;
  }

  void Finish(sqlite3_stmt* statement) {
    while (Step(statement)) {
    }
  }

  bool Step(sqlite3_stmt* statement) {
    const int result = sqlite3_step(statement);
    if (result != SQLITE_ROW && result != SQLITE_DONE) throw SqliteError(database_.get());
    return result == SQLITE_ROW;
  }

  std::function<DateTime()> local_time_;
  std::wstring path_;
  SqliteDatabase database_;
  bool is_immutable_ = false;
  std::wstring name_;
  SqlSchema schema_;
};

}  // namespace

SessionOpener SqliteOpener(std::function<DateTime()> local_time) {
  return [local_time = std::move(local_time)](const ConnectionSettings& settings) {
    return std::make_unique<SqliteSession>(settings, local_time);
  };
}

}  // namespace pxscheduler
