#include <gtest/gtest.h>
#include <windows.h>
// Needs the types of the header above.
#include <wincred.h>

#include <vector>

#include "platform/secrets/secret_box.h"
#include "platform/windows/windows_passwords.h"

namespace pxscheduler {
namespace {

class WindowsPasswordsTest : public testing::Test {
 protected:
  WindowsPasswordsTest() { Remove(); }
  ~WindowsPasswordsTest() override { Remove(); }
  static void Remove() {
    for (const wchar_t* target : {L"Orbalis/appuser", L"Orbalis/mailkey"})
      ::CredDeleteW(target, CRED_TYPE_GENERIC, 0);
  }
  CredentialPasswords Passwords() {
    return WindowsPasswords([this](const std::wstring& line) { warnings_.push_back(line); });
  }

  std::vector<std::wstring> warnings_;
};

TEST_F(WindowsPasswordsTest, ComeFromTheCredentialManager) {
  EXPECT_EQ(Passwords().DatabasePassword(), L"");
  EXPECT_TRUE(warnings_.empty());
  ASSERT_TRUE(WriteWindowsCredential("appuser", "f\xC3\xBCrst"));
  EXPECT_EQ(Passwords().DatabasePassword(), L"f\u00FCrst");
}

TEST_F(WindowsPasswordsTest, DecipherUnderTheStoredKey) {
  const SecretKey key = *SecretKey::Random();
  const std::string value = *Encipher(key, "hunter2");
  const std::wstring stored(value.begin(), value.end());
  EXPECT_EQ(Passwords().Decipher(stored), L"");
  EXPECT_EQ(warnings_.size(), 1U);
  ASSERT_TRUE(WriteWindowsCredential("mailkey", key.Text()));
  EXPECT_EQ(Passwords().Decipher(stored), L"hunter2");
  EXPECT_EQ(Passwords().Decipher(L"in clear"), L"in clear");
}

// What the system's own tool keeps: the password in UTF-16.
TEST_F(WindowsPasswordsTest, ReadsWhatTheSystemsDialogWrote) {
  std::wstring target = L"Orbalis/appuser";
  std::wstring password = L"p\u00E4ss";
  CREDENTIALW credential{};
  credential.Type = CRED_TYPE_GENERIC;
  credential.TargetName = target.data();
  credential.UserName = target.data();
  credential.CredentialBlob = reinterpret_cast<BYTE*>(password.data());
  credential.CredentialBlobSize = static_cast<DWORD>(password.size() * sizeof(wchar_t));
  credential.Persist = CRED_PERSIST_LOCAL_MACHINE;
  ASSERT_TRUE(::CredWriteW(&credential, 0));
  EXPECT_EQ(Passwords().DatabasePassword(), L"p\u00E4ss");
}

}  // namespace
}  // namespace pxscheduler
