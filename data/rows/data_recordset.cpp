#include "data/rows/data_recordset.h"

#include <utility>

#include "data/rows/data_connection.h"
#include "platform/runtime_error.h"

namespace pxscheduler {
namespace {

RuntimeError MissingColumn(std::wstring_view name, const RowStore& rows) {
  std::wstring columns;
  for (const std::wstring& column : rows.ColumnNames())
    columns += (columns.empty() ? L"\"" : L", \"") + column + L"\"";
  return Explained(ItemNotFound(), L"The query gives no column \"" + std::wstring(name) +
                                       L"\"; it gives " + columns + L".");
}

}  // namespace

void DataRecordset::Open(const std::wstring& source, Connection& connection, int /*cursor_type*/,
                         int /*lock_type*/, int /*options*/) {
  if (rows_) throw RuntimeError{3705, L"Operation is not allowed when the object is open."};
  const auto* data_connection = dynamic_cast<DataConnection*>(&connection);
  Session* session = data_connection != nullptr ? data_connection->OpenSession() : nullptr;
  if (session == nullptr) throw ConnectionClosed();
  RowStore rows = session->Query(source);
  if (rows.ColumnCount() == 0) return;
  rows_ = std::move(rows);
  GoTo(0);
}

bool DataRecordset::EndOfFile() const { return current_row_ >= RequireRows().RowCount(); }

std::size_t DataRecordset::RecordCount() const { return RequireRows().RowCount(); }

Value DataRecordset::Fields(std::wstring_view name) const {
  const RowStore& rows = RequireRows();
  const std::optional<std::size_t> column = rows.FindColumn(name);
  if (!column) throw MissingColumn(name, rows);
  if (current_row_ >= rows.RowCount()) throw NoCurrentRecord();
  return RowStore::Read(current_cells_[*column]);
}

void DataRecordset::SetSort(const std::wstring& column) {
  const std::optional<std::size_t> found = RequireRows().FindColumn(column);
  if (!found) throw MissingColumn(column, *rows_);
  rows_->Sort(*found);
  GoTo(0);
}

void DataRecordset::MoveNext() {
  if (EndOfFile()) throw NoCurrentRecord();
  GoTo(current_row_ + 1);
}

void DataRecordset::Close() {
  RequireRows();
  rows_.reset();
}

void DataRecordset::GoTo(std::size_t row) {
  current_row_ = row;
  if (row < rows_->RowCount()) rows_->FindCells(row, current_cells_);
}

const RowStore& DataRecordset::RequireRows() const {
  if (!rows_) throw ObjectClosed();
  return *rows_;
}

}  // namespace pxscheduler
