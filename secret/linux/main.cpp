// Makes the key that the mail password is enciphered under, and enciphers it.

#include <fcntl.h>
#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/files.h"
#include "platform/linux/linux_passwords.h"
#include "platform/linux/native_text.h"
#include "platform/runtime_error.h"
#include "platform/secrets/secret_box.h"
#include "secret/encipherment.h"

namespace pxscheduler {
namespace {

constexpr std::string_view kUsage =
    "Usage: pxsecret new-key FILE\n"
    "       pxsecret encipher KEYFILE\n"
    "\n"
    "new-key   makes a fresh key in FILE, which must not exist yet and which only its\n"
    "          owner may read. It becomes the credential \"mailkey\".\n"
    "encipher  reads a password from standard input, enciphers it under the key in\n"
    "          KEYFILE and writes the value for \"EmailPassword\". A terminal is asked\n"
    "          for the password twice and does not show it.\n"
    "\n"
    "Exit status: 0 done, 1 failed, 2 wrong usage.\n";

int FailWithErrno(const std::string& path) {
  return Fail(path + ": " + std::strerror(errno));  // NOLINT(concurrency-mt-unsafe): one thread
}

int NewKey(const std::string& path) {
  const std::optional<SecretKey> key = SecretKey::Random();
  if (!key) return Fail("no random numbers");
  FileDescriptor file(
      ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
  if (!file.IsOpen()) return FailWithErrno(path);
  std::string text = key->Text() + '\n';
  const bool written = WriteAll(file.Get(), text) && ::fsync(file.Get()) == 0 && file.Close();
  Wipe(text);
  if (written) return kDone;
  const int status = FailWithErrno(path);
  ::unlink(path.c_str());
  return status;
}

std::optional<SecretKey> ReadKey(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) == 0 && (status.st_mode & (S_IRWXG | S_IRWXO)) != 0)
    std::cerr << "pxsecret: warning: others than the owner may read " << path << '\n';
  std::string text = ReadNativeFile(path);
  std::optional<SecretKey> key = SecretKey::FromText(WithoutLineEnd(text));
  Wipe(text);
  return key;
}

constexpr std::size_t kMostBytesTyped = 1023;

// Nothing where it is not given, not twice the same, or longer than kMostBytesTyped.
std::optional<std::string> AskForPassword() {
  std::array<char, kMostBytesTyped + 1> buffer{};
  constexpr int kVerify = 1;
  const int failed =
      EVP_read_pw_string(buffer.data(), static_cast<int>(buffer.size()), "Password: ", kVerify);
  std::optional<std::string> password;
  if (failed == 0) password = buffer.data();
  OPENSSL_cleanse(buffer.data(), buffer.size());
  return password;
}

std::string ReadStandardInput() {
  std::string text;
  std::array<char, 4096> buffer{};
  while (std::cin.read(buffer.data(), buffer.size()) || std::cin.gcount() > 0)
    text.append(buffer.data(), static_cast<std::size_t>(std::cin.gcount()));
  OPENSSL_cleanse(buffer.data(), buffer.size());
  const std::size_t length = WithoutLineEnd(text).size();
  text.resize(length);
  return text;
}

int EncipherPassword(const std::string& key_path) {
  const std::optional<SecretKey> key = ReadKey(key_path);
  if (!key) return Fail(key_path + " holds no key");
  std::optional<std::string> password =
      ::isatty(STDIN_FILENO) != 0 ? AskForPassword() : std::optional(ReadStandardInput());
  if (!password)
    return Fail("no password given, not the same twice, or one of more than " +
                std::to_string(kMostBytesTyped) + " bytes, which only fits through a pipe");
  return PrintEnciphered(*key, *password);
}

int Run(const std::vector<std::string>& arguments) {
  if (arguments.size() == 1 && (arguments[0] == "--help" || arguments[0] == "-h")) {
    std::cout << kUsage;
    return kDone;
  }
  if (arguments.size() == 2 && arguments[0] == "new-key") return NewKey(arguments[1]);
  if (arguments.size() == 2 && arguments[0] == "encipher") return EncipherPassword(arguments[1]);
  std::cerr << kUsage;
  return kMisused;
}

}  // namespace
}  // namespace pxscheduler

int main(int argc, char** argv) {
  try {
    return pxscheduler::Run({argv + std::min(argc, 1), argv + argc});
  } catch (const pxscheduler::RuntimeError& error) {
    return pxscheduler::Fail(pxscheduler::ToNativePath(error.description));
  }
}
