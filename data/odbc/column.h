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

// What a column's values become.
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

// Whether the values may be too long for a buffer, so that they are read piece by piece.
bool IsLong(const Column& column);

// The C type that the driver converts a column's values to, and the bytes of a buffer for one.
SQLSMALLINT TransferType(CellKind kind);
std::size_t TransferWidth(const Column& column);

// Appends the value that the driver has left in a buffer to the current row. `length` is the
// driver's indicator: SQL_NULL_DATA or the bytes of the value; `scratch` is reused from call to
// call. Raises a provider failure for a value that the buffer cuts short.
void AppendCell(const Column& column, std::span<const std::byte> buffer, SQLLEN length,
                std::string& scratch, RowStore& rows);

// "-.4500" as "-0.45": a digit before the point, and none after it that says nothing.
std::string PlainDecimal(std::string_view text);

}  // namespace pxscheduler
