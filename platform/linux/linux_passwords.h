#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/secrets/credential_passwords.h"

namespace pxscheduler {

// Credentials in files of their name. One line end at the end of a file does not count. `folders`
// are searched in turn. `warn` is also told of a file that cannot be read, which counts as missing.
CredentialPasswords LinuxPasswords(std::vector<std::string> folders,
                                   std::function<void(const std::wstring&)> warn);

}  // namespace pxscheduler
