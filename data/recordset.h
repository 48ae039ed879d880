#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "data/connection.h"
#include "data/value.h"

namespace pxscheduler {

// A client-side result set: a static, read-only snapshot that stands on its first row once opened.
class Recordset {
 public:
  virtual ~Recordset() = default;

  // Runs the statement and reads its whole result. Raises ConnectionClosed (3709) when the
  // connection is not open, else the provider's errors.
  virtual void Open(const std::wstring& source, Connection& connection, int cursor_type,
                    int lock_type, int options) = 0;
  virtual bool EndOfFile() const = 0;  // EOF is a macro of the C library
  virtual std::size_t RecordCount() const = 0;
  // The current row's value; names compare without case. Raises ItemNotFound (3265) for a column
  // that the result set lacks, NoCurrentRecord (3021) at its end.
  virtual Value Fields(std::wstring_view name) const = 0;
  // Orders the rows by one column and goes to the first: ascending, stable, Null first, text
  // without case. Raises ItemNotFound (3265).
  virtual void SetSort(const std::wstring& column) = 0;
  virtual void MoveNext() = 0;
  virtual void Close() = 0;
};

}  // namespace pxscheduler
