#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/passwords.h"

namespace pxscheduler {

// Secrets in credential files: "appuser" holds the database password, "mailkey" the key that the
// mail password is enciphered under. One line end at the end of a file does not count.
class LinuxPasswords : public Passwords {
 public:
  // `folders` are searched in turn. `warn` is told, without the secret, what an operator has to
  // mend: a file that cannot be read, a key or a value that does not fit.
  LinuxPasswords(std::vector<std::string> folders, std::function<void(const std::wstring&)> warn);

  std::wstring DatabasePassword() const override;
  std::wstring Decipher(std::wstring_view stored) const override;

 private:
  std::optional<std::string> Credential(const std::string& name) const;

  std::vector<std::string> folders_;
  std::function<void(const std::wstring&)> warn_;
};

// Without one LF or CR LF at its end.
std::string_view WithoutLineEnd(std::string_view text);

}  // namespace pxscheduler
