#pragma once

#include <string>
#include <string_view>

namespace pxscheduler {

// The secrets of the installation. No result may reach a log, an error text or a command line.
class Passwords {
 public:
  virtual ~Passwords() = default;

  // The password of the database login "appuser"; "" where the machine has none.
  virtual std::wstring DatabasePassword() const = 0;
  // The clear text of a stored password. A value that begins with "v1:" is deciphered under the
  // machine's mail key ("" where that fails), any other value is clear text already.
  virtual std::wstring Decipher(std::wstring_view stored) const = 0;
};

}  // namespace pxscheduler
