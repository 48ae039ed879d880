// Keeps the product's secrets in the Credential Manager, and enciphers the mail password.

#include <windows.h>
// Needs the types of the header above.
#include <wincred.h>

#include <array>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/secrets/credential_passwords.h"
#include "platform/secrets/secret_box.h"
#include "platform/windows/windows_passwords.h"
#include "secret/encipherment.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

constexpr std::size_t kMostCharactersTyped = 1024;  // the end of the line included

constexpr std::string_view kUsage =
    "Usage: pxsecret store appuser\n"
    "       pxsecret new-key\n"
    "       pxsecret encipher\n"
    "\n"
    "store     reads the password of the database login from standard input and keeps it\n"
    "          in the Credential Manager, as \"Orbalis/appuser\".\n"
    "new-key   makes a fresh key and keeps it there as \"Orbalis/mailkey\", where none is\n"
    "          there yet.\n"
    "encipher  reads a password from standard input, enciphers it under that key and\n"
    "          writes the value for \"EmailPassword\".\n"
    "\n"
    "A console is asked for a password twice and does not show it. Credentials belong to\n"
    "the user who runs this: run it as the user whom the scheduler runs as.\n"
    "\n"
    "Exit status: 0 done, 1 failed, 2 wrong usage.\n";

int FailWithLastError(const std::string& action) {
  return Fail(action + ": error " + std::to_string(::GetLastError()));
}

// A console that does not show what is typed, as long as this lives.
class SilentConsole {
 public:
  explicit SilentConsole(HANDLE input) : input_(input) {
    is_console_ = ::GetConsoleMode(input, &mode_) != 0;
    if (is_console_) ::SetConsoleMode(input, mode_ & ~DWORD{ENABLE_ECHO_INPUT});
  }
  SilentConsole(const SilentConsole&) = delete;
  SilentConsole& operator=(const SilentConsole&) = delete;
  ~SilentConsole() {
    if (is_console_) ::SetConsoleMode(input_, mode_);
  }
  bool IsConsole() const { return is_console_; }

 private:
  HANDLE input_;
  DWORD mode_ = 0;
  bool is_console_ = false;
};

// Nothing for a line that is too long.
std::optional<std::string> ReadConsoleLine(HANDLE input, std::string_view prompt) {
  std::cerr << prompt << std::flush;
  std::array<wchar_t, kMostCharactersTyped> buffer{};
  DWORD count = 0;
  ::ReadConsoleW(input, buffer.data(), static_cast<DWORD>(buffer.size()), &count, nullptr);
  const bool is_whole = count < buffer.size() || buffer.back() == L'\n';
  std::string line = ToUtf8({buffer.data(), count});
  ::SecureZeroMemory(buffer.data(), sizeof buffer);
  std::cerr << '\n';
  const std::size_t length = WithoutLineEnd(line).size();
  line.resize(length);
  if (is_whole) return line;
  Wipe(line);
  return std::nullopt;
}

std::string ReadStandardInput(HANDLE input) {
  std::string text;
  std::array<char, 4096> buffer{};
  DWORD count = 0;
  while (::ReadFile(input, buffer.data(), static_cast<DWORD>(buffer.size()), &count, nullptr) !=
             0 &&
         count > 0)
    text.append(buffer.data(), count);
  ::SecureZeroMemory(buffer.data(), buffer.size());
  const std::size_t length = WithoutLineEnd(text).size();
  text.resize(length);
  return text;
}

// Typed twice. Nothing, and a message, where it is too long or not the same.
std::optional<std::string> AskForPassword(HANDLE input) {
  std::optional<std::string> password = ReadConsoleLine(input, "Password: ");
  std::optional<std::string> again = ReadConsoleLine(input, "Again: ");
  const bool is_whole = password && again;
  const bool is_same = password == again;
  if (again) Wipe(*again);
  if (is_whole && is_same) return password;
  if (password) Wipe(*password);
  Fail(is_whole ? "the two are not the same"
                : "a password of more than 1,022 characters only fits through a pipe");
  return std::nullopt;
}

std::optional<std::string> ReadPassword() {
  const HANDLE input = ::GetStdHandle(STD_INPUT_HANDLE);
  const SilentConsole console(input);
  return console.IsConsole() ? AskForPassword(input) : std::optional(ReadStandardInput(input));
}

int Store(const std::string& name) {
  std::optional<std::string> password = ReadPassword();
  if (!password) return kFailed;
  const auto problem = PasswordProblem(*password, CRED_MAX_CREDENTIAL_BLOB_SIZE);
  const bool written = !problem && WriteWindowsCredential(name, *password);
  Wipe(*password);
  if (problem) return Fail(*problem);
  return written ? kDone : FailWithLastError("the credential cannot be written");
}

int NewKey() {
  unsigned long error = ERROR_SUCCESS;
  std::optional<std::string> present = ReadWindowsCredential("mailkey", error);
  if (present) {
    Wipe(*present);
    return Fail("there is a key already");
  }
  const std::optional<SecretKey> key = SecretKey::Random();
  if (!key) return Fail("no random numbers");
  std::string text = key->Text();
  const bool written = WriteWindowsCredential("mailkey", text);
  Wipe(text);
  return written ? kDone : FailWithLastError("the credential cannot be written");
}

int EncipherPassword() {
  unsigned long error = ERROR_SUCCESS;
  std::optional<std::string> key_text = ReadWindowsCredential("mailkey", error);
  if (!key_text) return Fail("there is no key yet; \"pxsecret new-key\" makes one");
  const std::optional<SecretKey> key = SecretKey::FromText(*key_text);
  Wipe(*key_text);
  if (!key) return Fail("the credential \"Orbalis/mailkey\" is not a key");
  std::optional<std::string> password = ReadPassword();
  return password ? PrintEnciphered(*key, *password) : kFailed;
}

int Run(const std::vector<std::string>& arguments) {
  if (arguments == std::vector<std::string>{"--help"}) {
    std::cout << kUsage;
    return kDone;
  }
  if (arguments == std::vector<std::string>{"store", "appuser"}) return Store("appuser");
  if (arguments == std::vector<std::string>{"new-key"}) return NewKey();
  if (arguments == std::vector<std::string>{"encipher"}) return EncipherPassword();
  std::cerr << kUsage;
  return kMisused;
}

}  // namespace
}  // namespace pxscheduler

int main(int argument_count, char** arguments) {
  return pxscheduler::Run({arguments + (argument_count > 0 ? 1 : 0), arguments + argument_count});
}
