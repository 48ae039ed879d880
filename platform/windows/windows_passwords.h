#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/secrets/credential_passwords.h"

namespace pxscheduler {

// Generic credentials of the user who runs the program, in the Credential Manager: the secret
// "appuser" is the one with the target "Orbalis/appuser". `warn` is also told of one that cannot be
// read, which counts as missing.
CredentialPasswords WindowsPasswords(std::function<void(const std::wstring&)> warn);

// Keeps a secret there, in UTF-8, over one that is there already. False with the last error set.
bool WriteWindowsCredential(const std::string& name, const std::string& secret);

// Nothing where there is none of this name; `error` is then what the system says.
std::optional<std::string> ReadWindowsCredential(const std::string& name, unsigned long& error);

}  // namespace pxscheduler
