#pragma once

#include <string>

namespace pxscheduler {

// A database connection with the names and meanings of the platform's data objects. Every failure
// is a RuntimeError with the provider's own number and text unless said otherwise.
class Connection {
 public:
  static constexpr int kStateClosed = 0;
  static constexpr int kStateOpen = 1;
  static constexpr int kUseClient = 3;           // CursorLocation: the result set is read whole
  static constexpr int kOptionUnspecified = -1;  // cursor type, lock type, options

  virtual ~Connection() = default;

  // `connection_string` is keyword=value pairs separated by ";", without quotes: "Provider",
  // "User ID", "Password", "Initial Catalog" and "Data Source" count. `user_id` and `password`
  // override those of the string unless they are empty.
  virtual void Open(const std::wstring& connection_string, const std::wstring& user_id,
                    const std::wstring& password, int options) = 0;
  virtual int State() const = 0;
  virtual void SetCursorLocation(int location) = 0;
  // Runs a statement and discards its rows. Raises ObjectClosed (3704) while closed.
  virtual void Execute(const std::wstring& command_text, int options) = 0;
  // The current database, asked for at each call. Raises ObjectClosed while closed.
  virtual std::wstring DefaultDatabase() = 0;
  // Raises ObjectClosed while closed.
  virtual void Close() = 0;
};

}  // namespace pxscheduler
