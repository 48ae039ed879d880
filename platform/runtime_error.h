#pragma once

#include <cstdint>
#include <string>
#include <utility>

namespace pxscheduler {

// An error raised by the platform or by one of its components. Nothing but main() ends one, apart
// from the two places that go on by design (opening the connection, making folders).
struct RuntimeError {
  std::int32_t number;
  std::wstring description;
  // What was being done to what, and what to do about it, on one line: for standard error. "" where
  // the description says it all.
  std::wstring details{};
};

inline RuntimeError Explained(RuntimeError error, std::wstring details) {
  error.details = std::move(details);
  return error;
}

// Takes the step and returns its result. An error that it raises without details gets what
// `details` returns.
template <typename Details, typename Step>
decltype(auto) WithDetails(const Details& details, const Step& step) {
  try {
    return step();
  } catch (RuntimeError& error) {
    if (error.details.empty()) error.details = details();
    throw;
  }
}

// The errors that the platform itself raises, each with the platform's number and text.
RuntimeError InvalidProcedureCall();  // 5
RuntimeError Overflow();              // 6
RuntimeError OutOfMemory();           // 7
RuntimeError TypeMismatch();          // 13
RuntimeError ObjectRequired();        // 424

// The errors that name what they are about after the platform's text: "File not found: x.qzw".
RuntimeError FileNotFound(const std::wstring& path);      // 53
RuntimeError DiskFull(const std::wstring& path);          // 61
RuntimeError PermissionDenied(const std::wstring& path);  // 70
RuntimeError FileAccessError(const std::wstring& path);   // 75
RuntimeError PathNotFound(const std::wstring& path);      // 76
// 321; `detail` says where and why, for instance "orbalis.reg, line 3: no closing quotation mark".
RuntimeError InvalidFileFormat(const std::wstring& detail);

// The errors of the data objects.
RuntimeError ItemNotFound();      // 3265, a column that the result set does not have
RuntimeError ObjectClosed();      // 3704, an operation on a result set that is closed
RuntimeError ConnectionClosed();  // 3709, a result set opened on a connection that is closed
RuntimeError NoCurrentRecord();   // 3021, a field read at the end of the result set

}  // namespace pxscheduler
