#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "data/odbc/handles.h"
#include "data/odbc/odbc_headers.h"
#include "data/rows/row_store.h"

namespace pxscheduler {

// How a column's values are kept.
enum class CellKind { kBoolean, kInteger, kSingle, kDouble, kDecimal, kDateTime, kGuid, kText };

// A column of a result, as the driver describes it.
struct Column {
  std::wstring name;
  CellKind kind = CellKind::kText;
  std::size_t characters = 0;  // of a text, in UTF-16 units; 0 where the type sets no bound
};

// The columns of a statement's current row set, empty where it has none. Raises the driver's error.
std::vector<Column> DescribeColumns(const Statement& statement);

CellKind CellKindOf(SQLSMALLINT sql_type);

// Whether the values may exceed a buffer, so that they are read in parts.
bool IsLong(const Column& column);

// The C type that the driver converts a column's values to, and the size in bytes of a buffer for
// one.
SQLSMALLINT TransferType(CellKind kind);
std::size_t TransferWidth(const Column& column);

// Appends the value that the driver left in a buffer to the current row. `length` is the driver's
// indicator: SQL_NULL_DATA or the size of the value in bytes; `scratch` is reused from call to
// call. Raises a provider failure for a value that did not fit.
void AppendCell(const Column& column, std::span<const std::byte> buffer, SQLLEN length,
                std::string& scratch, RowStore& rows);

// "-.4500" as "-0.45": a digit before the point, and no trailing zeros behind it.
std::string PlainDecimal(std::string_view text);

}  // namespace pxscheduler
