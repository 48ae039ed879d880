#include "data/odbc/column.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstring>

#include "data/odbc/wide_text.h"
#include "data/rows/session.h"
#include "platform/civil_time.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

constexpr std::size_t kLongestBoundText = 8000;  // what a varchar(n) can be declared with
constexpr std::size_t kNumberText = 64;          // 38 digits, a sign and a point

// A value that the driver wrote as a C type of its own.
template <typename T>
T As(std::span<const std::byte> buffer) {
  T value;
  std::memcpy(&value, buffer.data(), sizeof value);
  return value;
}

DateTime ToDateTime(const SQL_TIMESTAMP_STRUCT& timestamp) {
  using std::chrono::hours;
  using std::chrono::minutes;
  using std::chrono::seconds;
  const std::chrono::year_month_day day{std::chrono::year(timestamp.year),
                                        std::chrono::month(timestamp.month),
                                        std::chrono::day(timestamp.day)};
  // A fraction of a second is cut off: 23:59:59.997 still belongs to its day.
  return {std::chrono::sys_days(day),
          hours(timestamp.hour) + minutes(timestamp.minute) + seconds(timestamp.second)};
}

std::string_view AsText(std::span<const std::byte> buffer, SQLLEN length) {
  return {reinterpret_cast<const char*>(buffer.data()), static_cast<std::size_t>(length)};
}

std::span<const SQLWCHAR> AsWideText(std::span<const std::byte> buffer, SQLLEN length) {
  return {reinterpret_cast<const SQLWCHAR*>(buffer.data()),
          static_cast<std::size_t>(length) / sizeof(SQLWCHAR)};
}

Column DescribeColumn(const Statement& statement, SQLUSMALLINT number) {
  std::array<SQLWCHAR, 1024> name;
  SQLSMALLINT name_length = 0;
  SQLSMALLINT sql_type = 0;
  SQLULEN size = 0;
  SQLSMALLINT digits = 0;
  SQLSMALLINT nullable = 0;
  Check(statement,
        SQLDescribeColW(statement.Get(), number, name.data(), static_cast<SQLSMALLINT>(name.size()),
                        &name_length, &sql_type, &size, &digits, &nullable));
  const std::size_t held =
      std::min(static_cast<std::size_t>(std::max<SQLSMALLINT>(name_length, 0)), name.size() - 1);
  Column column{.name = FromDriverText(std::span(name).first(held)), .kind = CellKindOf(sql_type)};
  switch (sql_type) {
    case SQL_CHAR:
    case SQL_VARCHAR:
    case SQL_WCHAR:
    case SQL_WVARCHAR:
      column.characters = size;
      break;
    case SQL_BINARY:
    case SQL_VARBINARY:
      column.characters = size * 2;  // in hexadecimal
      break;
    default:
      break;
  }
  return column;
}

}  // namespace

std::vector<Column> DescribeColumns(const Statement& statement) {
  SQLSMALLINT count = 0;
  Check(statement, SQLNumResultCols(statement.Get(), &count));
  std::vector<Column> columns;
  for (SQLSMALLINT number = 1; number <= count; ++number)
    columns.push_back(DescribeColumn(statement, static_cast<SQLUSMALLINT>(number)));
  return columns;
}

CellKind CellKindOf(SQLSMALLINT sql_type) {
  switch (sql_type) {
    case SQL_BIT:
      return CellKind::kBoolean;
    case SQL_TINYINT:
    case SQL_SMALLINT:
    case SQL_INTEGER:
    case SQL_BIGINT:
      return CellKind::kInteger;
    case SQL_REAL:
      return CellKind::kSingle;
    case SQL_FLOAT:
    case SQL_DOUBLE:
      return CellKind::kDouble;
    case SQL_DECIMAL:
    case SQL_NUMERIC:
      return CellKind::kDecimal;
    case SQL_TYPE_DATE:
    case SQL_TYPE_TIMESTAMP:
      return CellKind::kDateTime;
    case SQL_GUID:
      return CellKind::kGuid;
    default:
      return CellKind::kText;
  }
}

bool IsLong(const Column& column) {
  return column.kind == CellKind::kText &&
         (column.characters == 0 || column.characters > kLongestBoundText);
}

SQLSMALLINT TransferType(CellKind kind) {
  switch (kind) {
    case CellKind::kBoolean:
      return SQL_C_BIT;
    case CellKind::kInteger:
      return SQL_C_SBIGINT;
    case CellKind::kSingle:
      return SQL_C_FLOAT;
    case CellKind::kDouble:
      return SQL_C_DOUBLE;
    case CellKind::kDateTime:
      return SQL_C_TYPE_TIMESTAMP;
    case CellKind::kDecimal:
    case CellKind::kGuid:
      return SQL_C_CHAR;
    case CellKind::kText:
      return SQL_C_WCHAR;
  }
  return SQL_C_WCHAR;
}

std::size_t TransferWidth(const Column& column) {
  switch (column.kind) {
    case CellKind::kBoolean:
      return sizeof(SQLCHAR);
    case CellKind::kInteger:
      return sizeof(SQLBIGINT);
    case CellKind::kSingle:
      return sizeof(SQLREAL);
    case CellKind::kDouble:
      return sizeof(SQLDOUBLE);
    case CellKind::kDateTime:
      return sizeof(SQL_TIMESTAMP_STRUCT);
    case CellKind::kDecimal:
    case CellKind::kGuid:
      return kNumberText;
    case CellKind::kText:
      return (column.characters + 1) * sizeof(SQLWCHAR);
  }
  return 0;
}

void AppendCell(const Column& column, std::span<const std::byte> buffer, SQLLEN length,
                std::string& scratch, RowStore& rows) {
  if (length == SQL_NULL_DATA) return rows.AppendNull();
  const SQLSMALLINT type = TransferType(column.kind);
  const std::size_t terminator = type == SQL_C_WCHAR ? sizeof(SQLWCHAR) : type == SQL_C_CHAR;
  // Within a block this is the only sign of a value that did not fit.
  if (length < 0 || static_cast<std::size_t>(length) + terminator > buffer.size()) {
    throw ProviderFailure(L"A value of the column \"" + column.name +
                          L"\" is longer than the driver said.");
  }
  switch (column.kind) {
    case CellKind::kBoolean:
      return rows.AppendBool(As<SQLCHAR>(buffer) != 0);
    case CellKind::kInteger:
      return rows.AppendInteger(As<std::int64_t>(buffer));
    case CellKind::kSingle:
      return rows.AppendFloat(As<float>(buffer));
    case CellKind::kDouble:
      return rows.AppendDouble(As<double>(buffer));
    case CellKind::kDateTime:
      return rows.AppendDateTime(ToDateTime(As<SQL_TIMESTAMP_STRUCT>(buffer)));
    case CellKind::kDecimal:
      return rows.AppendDecimal(PlainDecimal(AsText(buffer, length)));
    case CellKind::kGuid:
      return rows.AppendText('{' + std::string(AsText(buffer, length)) + '}');
    case CellKind::kText:
      ToUtf8(AsWideText(buffer, length), scratch);
      return rows.AppendText(scratch);
  }
}

std::string PlainDecimal(std::string_view text) {
  std::string plain;
  if (text.starts_with('-')) {
    plain = "-";
    text.remove_prefix(1);
  }
  const std::size_t point = std::min(text.find('.'), text.size());
  std::string_view whole = text.substr(0, point);
  whole.remove_prefix(std::min(whole.find_first_not_of('0'), whole.size()));
  const std::string_view fraction = text.substr(std::min(point + 1, text.size()));
  const std::size_t digits = fraction.find_last_not_of('0') + 1;  // 0 where there is none
  plain.append(whole.empty() ? "0" : whole);
  if (digits != 0) plain.append(1, '.').append(fraction, 0, digits);
  return plain == "-0" ? "0" : plain;
}

}  // namespace pxscheduler
