#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "platform/secrets/secret_box.h"

namespace pxscheduler {

// The program's exit statuses.
inline constexpr int kDone = 0;
inline constexpr int kFailed = 1;
inline constexpr int kMisused = 2;

// Says on standard error why the program failed; returns kFailed.
int Fail(const std::string& reason);

// Nothing for a password of at most `most_bytes` that can be one, else what is wrong with it.
std::optional<std::string> PasswordProblem(const std::string& password, std::size_t most_bytes);

// Prints the value that the settings hold for the password, which it wipes. Returns the exit
// status.
int PrintEnciphered(const SecretKey& key, std::string& password);

}  // namespace pxscheduler
