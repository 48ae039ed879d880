#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "data/recordset.h"
#include "data/rows/row_store.h"

namespace pxscheduler {

// A result set over the rows that a DataConnection's session delivers. It stays closed when the
// statement has no row set; while closed, everything but Open raises ObjectClosed (3704). Open
// raises 3705 while it is open already.
class DataRecordset : public Recordset {
 public:
  void Open(const std::wstring& source, Connection& connection, int cursor_type, int lock_type,
            int options) override;
  bool EndOfFile() const override;
  std::size_t RecordCount() const override;
  Value Fields(std::wstring_view name) const override;
  void SetSort(const std::wstring& column) override;
  void MoveNext() override;
  void Close() override;

 private:
  const RowStore& RequireRows() const;
  void GoTo(std::size_t row);

  std::optional<RowStore> rows_;
  std::size_t current_row_ = 0;
  std::vector<RowStore::Cell> current_cells_;
};

}  // namespace pxscheduler
