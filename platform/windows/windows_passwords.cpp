#include "platform/windows/windows_passwords.h"

#include <windows.h>
// Needs the types of the header above.
#include <wincred.h>

#include <memory>
#include <utility>

#include "platform/secrets/secret_box.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

struct CredentialCloser {
  void operator()(CREDENTIALW* credential) const {
    ::SecureZeroMemory(credential->CredentialBlob, credential->CredentialBlobSize);
    ::CredFree(credential);
  }
};

std::wstring TargetOf(const std::string& name) { return L"Orbalis/" + FromUtf8(name); }

// The system's own dialogs keep a password in UTF-16, pxsecret in UTF-8. A secret in UTF-8 holds no
// NUL, and one in UTF-16 with a letter of ASCII does.
std::string SecretOf(const unsigned char* bytes, std::size_t size) {
  std::string secret(reinterpret_cast<const char*>(bytes), size);
  if (size % sizeof(wchar_t) != 0 || secret.find('\0') == std::string::npos) return secret;
  std::wstring wide(size / sizeof(wchar_t), L'\0');
  ::CopyMemory(wide.data(), bytes, size);
  Wipe(secret);
  secret = ToUtf8(wide);
  ::SecureZeroMemory(wide.data(), size);
  return secret;
}

}  // namespace

std::optional<std::string> ReadWindowsCredential(const std::string& name, unsigned long& error) {
  CREDENTIALW* found = nullptr;
  if (::CredReadW(TargetOf(name).c_str(), CRED_TYPE_GENERIC, 0, &found) == 0) {
    error = ::GetLastError();
    return std::nullopt;
  }
  const std::unique_ptr<CREDENTIALW, CredentialCloser> credential(found);
  return SecretOf(credential->CredentialBlob, credential->CredentialBlobSize);
}

bool WriteWindowsCredential(const std::string& name, const std::string& secret) {
  std::wstring target = TargetOf(name);
  std::wstring user = FromUtf8(name);
  std::string blob = secret;
  CREDENTIALW credential{};
  credential.Type = CRED_TYPE_GENERIC;
  credential.TargetName = target.data();
  credential.UserName = user.data();
  credential.CredentialBlob = reinterpret_cast<BYTE*>(blob.data());
  credential.CredentialBlobSize = static_cast<DWORD>(blob.size());
  credential.Persist = CRED_PERSIST_LOCAL_MACHINE;
  const bool written = ::CredWriteW(&credential, 0) != 0;
  const DWORD error = ::GetLastError();
  Wipe(blob);
  ::SetLastError(error);
  return written;
}

CredentialPasswords WindowsPasswords(std::function<void(const std::wstring&)> warn) {
  auto read = [warn](const std::string& name) {
    unsigned long error = ERROR_SUCCESS;
    std::optional<std::string> secret = ReadWindowsCredential(name, error);
    if (!secret && error != ERROR_NOT_FOUND)
      warn(L"Credential not read: " + TargetOf(name) + L" (error " + std::to_wstring(error) + L")");
    return secret;
  };
  return {std::move(read), std::move(warn)};
}

}  // namespace pxscheduler
