#include "data/odbc/row_set_reader.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "data/odbc/column.h"
#include "data/odbc/wide_text.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

constexpr std::size_t kBlockBytes = 1 << 19;
constexpr std::size_t kMostRows = 500;
constexpr std::size_t kPartUnits = 1 << 15;

// A column and the buffers that the driver fills, an element for each row.
struct BoundColumn {
  Column column;
  std::size_t width;  // bytes of one value
  std::vector<std::byte> values;
  std::vector<SQLLEN> lengths;
};

// The rows that one call fetches.
class Block {
 public:
  // Binds the first `bound` columns. Lives until the statement's row set has been read.
  Block(const Statement& statement, const std::vector<Column>& columns, std::size_t bound)
      : statement_(statement) {
    std::size_t row_bytes = 1;
    for (std::size_t i = 0; i < bound; ++i) row_bytes += TransferWidth(columns[i]);
    const std::size_t rows =
        bound < columns.size() ? 1 : std::clamp<std::size_t>(kBlockBytes / row_bytes, 1, kMostRows);
    states_.resize(rows);
    Set(SQL_ATTR_ROW_BIND_TYPE, AttributeValue(SQL_BIND_BY_COLUMN));
    Set(SQL_ATTR_ROW_ARRAY_SIZE, AttributeValue(rows));
    Set(SQL_ATTR_ROWS_FETCHED_PTR, &fetched_);
    Set(SQL_ATTR_ROW_STATUS_PTR, states_.data());
    columns_.reserve(bound);
    for (std::size_t i = 0; i < bound; ++i) Bind(columns[i], rows);
  }
  ~Block() {
    SQLFreeStmt(statement_.Get(), SQL_UNBIND);
    SQLSetStmtAttr(statement_.Get(), SQL_ATTR_ROWS_FETCHED_PTR, nullptr, 0);
    SQLSetStmtAttr(statement_.Get(), SQL_ATTR_ROW_STATUS_PTR, nullptr, 0);
  }
  Block(const Block&) = delete;
  Block& operator=(const Block&) = delete;

  // The number of rows fetched, 0 at the end of the row set.
  std::size_t Fetch() {
    fetched_ = 0;
    const SQLRETURN result = SQLFetch(statement_.Get());
    if (result == SQL_NO_DATA) return 0;
    Check(statement_, result);
    for (SQLULEN row = 0; row < fetched_; ++row)
      if (states_[row] == SQL_ROW_ERROR) Check(statement_, SQL_ERROR);
    return fetched_;
  }

  // Appends the bound columns of a fetched row, 0-based.
  void AppendRow(std::size_t row, RowStore& rows) {
    for (const BoundColumn& bound : columns_) {
      const std::span<const std::byte> values(bound.values);
      AppendCell(bound.column, values.subspan(row * bound.width, bound.width), bound.lengths[row],
                 scratch_, rows);
    }
  }

 private:
  void Set(SQLINTEGER attribute, SQLPOINTER value) {
    Check(statement_, SQLSetStmtAttr(statement_.Get(), attribute, value, 0));
  }

  void Bind(const Column& column, std::size_t rows) {
    const std::size_t width = TransferWidth(column);
    columns_.push_back({column, width, std::vector<std::byte>(width * rows),
                        std::vector<SQLLEN>(rows, SQL_NULL_DATA)});
    BoundColumn& bound = columns_.back();
    Check(statement_, SQLBindCol(statement_.Get(), static_cast<SQLUSMALLINT>(columns_.size()),
                                 TransferType(column.kind), bound.values.data(),
                                 static_cast<SQLLEN>(width), bound.lengths.data()));
  }

  const Statement& statement_;
  SQLULEN fetched_ = 0;
  std::vector<SQLUSMALLINT> states_;
  std::vector<BoundColumn> columns_;
  std::string scratch_;
};

// Reads the values of the current row that are not bound.
class UnboundReader {
 public:
  explicit UnboundReader(const Statement& statement) : statement_(statement), part_(kPartUnits) {}

  // `number` is the column's, 1-based, and grows within a row.
  void AppendValue(const Column& column, SQLUSMALLINT number, RowStore& rows) {
    if (IsLong(column)) return AppendLongText(number, rows);
    value_.resize(TransferWidth(column));
    SQLLEN length = SQL_NULL_DATA;
    Check(statement_, SQLGetData(statement_.Get(), number, TransferType(column.kind), value_.data(),
                                 static_cast<SQLLEN>(value_.size()), &length));
    AppendCell(column, value_, length, utf8_, rows);
  }

 private:
  void AppendLongText(SQLUSMALLINT number, RowStore& rows) {
    text_.clear();
    for (;;) {
      SQLLEN left = 0;
      const SQLRETURN result =
          SQLGetData(statement_.Get(), number, SQL_C_WCHAR, part_.data(),
                     static_cast<SQLLEN>(part_.size() * sizeof(SQLWCHAR)), &left);
      if (result == SQL_NO_DATA) break;
      Check(statement_, result);
      if (left == SQL_NULL_DATA) return rows.AppendNull();
      const std::size_t room = part_.size() - 1;  // the last unit is a terminating zero
      const bool more =
          left == SQL_NO_TOTAL || static_cast<std::size_t>(left) > room * sizeof(SQLWCHAR);
      const std::size_t held = more ? room : static_cast<std::size_t>(left) / sizeof(SQLWCHAR);
      text_.insert(text_.end(), part_.begin(), part_.begin() + static_cast<std::ptrdiff_t>(held));
      if (!more) break;
    }
    ToUtf8(text_, utf8_);
    rows.AppendText(utf8_);
  }

  const Statement& statement_;
  std::vector<SQLWCHAR> part_;
  std::vector<SQLWCHAR> text_;
  std::string utf8_;
  std::vector<std::byte> value_;
};

}  // namespace

RowStore ReadRowSet(const Statement& statement) {
  const std::vector<Column> columns = DescribeColumns(statement);
  if (columns.empty()) return {};
  std::vector<std::wstring> names;
  names.reserve(columns.size());
  for (const Column& column : columns) names.push_back(column.name);
  RowStore rows(std::move(names));
  // Drivers give values that are not bound from left to right only, so that no column behind the
  // first long one can be bound.
  const auto first_long = std::ranges::find_if(columns, IsLong);
  const auto bound = static_cast<std::size_t>(first_long - columns.begin());
  Block block(statement, columns, bound);
  UnboundReader unbound(statement);
  for (std::size_t fetched = block.Fetch(); fetched != 0; fetched = block.Fetch()) {
    for (std::size_t row = 0; row < fetched; ++row) {
      block.AppendRow(row, rows);
      for (std::size_t i = bound; i < columns.size(); ++i)
        unbound.AppendValue(columns[i], static_cast<SQLUSMALLINT>(i + 1), rows);
      rows.EndRow();
    }
  }
  return rows;
}

}  // namespace pxscheduler
