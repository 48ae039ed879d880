#include "secret/encipherment.h"

#include <iostream>

#include "platform/secrets/credential_passwords.h"

namespace pxscheduler {

int Fail(const std::string& reason) {
  std::cerr << "pxsecret: " << reason << '\n';
  return kFailed;
}

std::optional<std::string> PasswordProblem(const std::string& password, std::size_t most_bytes) {
  if (password.empty()) return "no password given";
  if (!IsPasswordText(password)) return "a password is one line of UTF-8 text";
  if (password.size() > most_bytes)
    return "the password is too long: " + std::to_string(password.size()) + " bytes, " +
           std::to_string(most_bytes) + " at most";
  return std::nullopt;
}

int PrintEnciphered(const SecretKey& key, std::string& password) {
  const std::optional<std::string> problem = PasswordProblem(password, kMostEncipheredBytes);
  std::optional<std::string> value;
  if (!problem) value = Encipher(key, password);
  Wipe(password);
  if (problem) return Fail(*problem);
  if (!value) return Fail("the cipher is not available");
  std::cout << *value << std::endl;
  return std::cout ? kDone : Fail("standard output cannot be written");
}

}  // namespace pxscheduler
