#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "platform/passwords.h"

namespace pxscheduler {

// Secrets in the machine's credentials: "appuser" holds the database password, "mailkey" the key
// that the mail password is enciphered under.
class CredentialPasswords : public Passwords {
 public:
  // Gives a credential's text in UTF-8, nothing where the machine has none of this name.
  using CredentialReader = std::function<std::optional<std::string>(const std::string& name)>;

  // `warn` is told, without the secret, what an operator has to mend: a key or a value that does
  // not fit.
  CredentialPasswords(CredentialReader credential, std::function<void(const std::wstring&)> warn);

  std::wstring DatabasePassword() const override;
  std::wstring Decipher(std::wstring_view stored) const override;

 private:
  CredentialReader credential_;
  std::function<void(const std::wstring&)> warn_;
};

// Without one LF or CR LF at its end.
std::string_view WithoutLineEnd(std::string_view text);

// Whether the bytes can be a password: one line of UTF-8 text.
bool IsPasswordText(std::string_view bytes);

}  // namespace pxscheduler
