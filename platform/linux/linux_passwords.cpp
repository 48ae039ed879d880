#include "platform/linux/linux_passwords.h"

#include <utility>

#include "platform/code_page.h"
#include "platform/linux/files.h"
#include "platform/linux/secret_box.h"
#include "platform/runtime_error.h"

namespace pxscheduler {

std::string_view WithoutLineEnd(std::string_view text) {
  if (text.ends_with('\n')) {
    text.remove_suffix(1);
    if (text.ends_with('\r')) text.remove_suffix(1);
  }
  return text;
}

LinuxPasswords::LinuxPasswords(std::vector<std::string> folders,
                               std::function<void(const std::wstring&)> warn)
    : folders_(std::move(folders)), warn_(std::move(warn)) {}

// Nothing where no folder holds it; the caller wipes it.
std::optional<std::string> LinuxPasswords::Credential(const std::string& name) const {
  for (const std::string& folder : folders_) {
    if (folder.empty()) continue;
    std::string path = folder;
    path.append("/").append(name);
    try {
      std::optional<std::string> text = ReadNativeFileIfAny(path);
      if (!text) continue;
      const std::size_t length = WithoutLineEnd(*text).size();
      text->resize(length);
      return text;
    } catch (const RuntimeError& error) {
      warn_(L"Credential not read: " + error.description);
      return std::nullopt;
    }
  }
  return std::nullopt;
}

std::wstring LinuxPasswords::DatabasePassword() const {
  std::optional<std::string> password = Credential("appuser");
  if (!password) return L"";
  std::wstring text = FromUtf8(*password);
  Wipe(*password);
  return text;
}

std::wstring LinuxPasswords::Decipher(std::wstring_view stored) const {
  const std::string value = ToUtf8(stored);
  if (!value.starts_with(kEncipheredPrefix)) return std::wstring(stored);
  std::optional<std::string> key_text = Credential("mailkey");
  if (!key_text) {
    warn_(L"The stored mail password needs the credential \"mailkey\", which there is not.");
    return L"";
  }
  const std::optional<SecretKey> key = SecretKey::FromText(*key_text);
  Wipe(*key_text);
  if (!key) {
    warn_(L"The credential \"mailkey\" is not a key.");
    return L"";
  }
  std::optional<std::string> clear_text = pxscheduler::Decipher(*key, value);
  if (!clear_text) {
    warn_(L"The stored mail password was not enciphered under this \"mailkey\".");
    return L"";
  }
  std::wstring text = FromUtf8(*clear_text);
  Wipe(*clear_text);
  return text;
}

}  // namespace pxscheduler
