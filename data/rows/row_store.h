#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "data/rows/byte_arena.h"
#include "data/rows/column_names.h"
#include "data/value.h"
#include "platform/civil_time.h"

namespace pxscheduler {

// A whole result set in little more memory than its values take: the cells of a row stand one after
// another in an arena, each behind a byte that holds its type (and the length of a short text).
//
// An engine appends the cells of a row from the first column to the last, then calls EndRow. All
// texts are UTF-8 and may hold NUL. Raises OutOfMemory (7) for a text of 4 GiB or more.
class RowStore {
 public:
  RowStore() = default;  // without columns: a statement that has no row set
  explicit RowStore(std::vector<std::wstring> column_names);

  void AppendNull();
  void AppendBool(bool value);
  void AppendInteger(std::int64_t value);
  void AppendFloat(float value);
  void AppendDouble(double value);
  // In the form of Decimal, at most 255 characters.
  void AppendDecimal(std::string_view digits);
  void AppendDateTime(const DateTime& value);
  void AppendText(std::string_view utf8);
  void EndRow();

  std::size_t ColumnCount() const { return columns_.Count(); }
  std::size_t RowCount() const { return row_count_; }
  const std::vector<std::wstring>& ColumnNames() const { return columns_.All(); }
  // 0-based; names compare without case, and of several columns with one name it is the first.
  std::optional<std::size_t> FindColumn(std::wstring_view name) const {
    return columns_.Find(name);
  }
  // Where a value is stored. Valid as long as the store.
  using Cell = const char*;
  // Finds the cells of a row, from the first column to the last, in one pass. The row is 0-based,
  // in range and in the order that Sort made.
  void FindCells(std::size_t row, std::vector<Cell>& cells) const;
  static Value Read(Cell cell);
  // Both 0-based and in range.
  Value Read(std::size_t row, std::size_t column) const { return Read(CellAt(row, column)); }

  // Orders the rows by the column, ascending: Null, numbers by number, dates by date, text in lower
  // case by code point. Rows that compare equal stand in the order in which they were appended.
  void Sort(std::size_t column);

 private:
  struct SortEntry;

  Cell CellAt(std::size_t row, std::size_t column) const;
  ByteArena::Position& PositionOf(std::size_t row) const {
    return positions_[row / kPositionsInChunk][row % kPositionsInChunk];
  }
  void AppendKey(std::size_t row, std::size_t column, std::string& key) const;
  void SortRun(SortEntry* first, SortEntry* last, std::size_t column) const;

  static constexpr std::size_t kPositionsInChunk = std::size_t{1} << 16;

  class ColumnNames columns_;
  ByteArena cells_;
  std::vector<std::unique_ptr<ByteArena::Position[]>> positions_;  // of the rows, in their order
  std::size_t row_count_ = 0;
  std::string row_;  // the row being appended
};

}  // namespace pxscheduler
