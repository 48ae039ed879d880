#include "platform/secrets/credential_passwords.h"

#include <utility>

#include "platform/secrets/secret_box.h"
#include "text/utf8.h"

namespace pxscheduler {

std::string_view WithoutLineEnd(std::string_view text) {
  if (text.ends_with('\n')) {
    text.remove_suffix(1);
    if (text.ends_with('\r')) text.remove_suffix(1);
  }
  return text;
}

bool IsPasswordText(std::string_view bytes) {
  const bool one_line = bytes.find_first_of(std::string_view("\r\n\0", 3)) == bytes.npos;
  return one_line && !bytes.empty() && ToUtf8(FromUtf8(bytes)) == bytes;
}

CredentialPasswords::CredentialPasswords(CredentialReader credential,
                                         std::function<void(const std::wstring&)> warn)
    : credential_(std::move(credential)), warn_(std::move(warn)) {}

std::wstring CredentialPasswords::DatabasePassword() const {
  std::optional<std::string> password = credential_("appuser");
  if (!password) return L"";
  std::wstring text = FromUtf8(*password);
  Wipe(*password);
  return text;
}

std::wstring CredentialPasswords::Decipher(std::wstring_view stored) const {
  const std::string value = ToUtf8(stored);
  if (!value.starts_with(kEncipheredPrefix)) return std::wstring(stored);
  std::optional<std::string> key_text = credential_("mailkey");
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
