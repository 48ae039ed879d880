#include <gmock/gmock.h>
#include <sys/stat.h>

#include "platform/linux/linux_passwords.h"
#include "platform/secrets/secret_box.h"
#include "tests/support/child_process.h"
#include "tests/support/scratch_folder.h"

namespace pxscheduler {
namespace {

class CredentialsTest : public testing::Test {
 protected:
  CredentialPasswords Passwords() {
    return LinuxPasswords({"", first_.Path(), second_.Path()},
                          [this](const std::wstring& line) { warnings_.push_back(line); });
  }

  ScratchFolder first_;
  ScratchFolder second_;
  std::vector<std::wstring> warnings_;
};

TEST_F(CredentialsTest, ComeFromTheFirstFolderThatHoldsThem) {
  EXPECT_EQ(Passwords().DatabasePassword(), L"");
  second_.Write("appuser", "second\n\n");
  EXPECT_EQ(Passwords().DatabasePassword(), L"second\n");
  first_.Write("appuser", "f\xC3\xBCrst\r\n");
  EXPECT_EQ(Passwords().DatabasePassword(), L"f\u00FCrst");
  EXPECT_THAT(warnings_, testing::IsEmpty());
}

TEST_F(CredentialsTest, DecipherTheMailPassword) {
  const SecretKey key = *SecretKey::Random();
  const std::string value = *Encipher(key, "hunter2");
  const std::wstring stored(value.begin(), value.end());
  EXPECT_EQ(Passwords().Decipher(L"in the clear"), L"in the clear");
  EXPECT_EQ(Passwords().Decipher(L"V1:AAAA"), L"V1:AAAA");
  EXPECT_THAT(warnings_, testing::IsEmpty());

  EXPECT_EQ(Passwords().Decipher(stored), L"");
  first_.Write("mailkey", "no key\n");
  EXPECT_EQ(Passwords().Decipher(stored), L"");
  first_.Write("mailkey", SecretKey::Random()->Text());
  EXPECT_EQ(Passwords().Decipher(stored), L"");
  EXPECT_EQ(warnings_.size(), 3U);
  for (const std::wstring& warning : warnings_)
    EXPECT_THAT(warning, testing::Not(testing::HasSubstr(stored)));

  first_.Write("mailkey", key.Text() + "\n");
  EXPECT_EQ(Passwords().Decipher(stored), L"hunter2");
  EXPECT_EQ(Passwords().Decipher(L"v1:\u20AC"), L"");
}

struct Finished {
  int status;
  std::string output;  // and errors
};

Finished RunShell(const std::string& command) {
  const ScratchFolder folder;
  const int status = ChildProcess({"/bin/sh", "-c", command}, folder.Path("output")).Wait();
  return {status, folder.Read("output")};
}

TEST_F(CredentialsTest, AreMadeByPxsecret) {
  const std::string program = PXSECRET;
  const std::string key = first_.Path("mailkey");
  EXPECT_EQ(RunShell(program + " new-key " + key).status, 0);
  struct stat status {};
  ASSERT_EQ(::stat(key.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);

  const std::string made = first_.Read("mailkey");
  EXPECT_EQ(RunShell(program + " new-key " + key).status, 1);
  EXPECT_EQ(first_.Read("mailkey"), made);

  const Finished enciphered = RunShell("echo hunter2 | " + program + " encipher " + key);
  EXPECT_EQ(enciphered.status, 0);
  const std::string_view value = WithoutLineEnd(enciphered.output);
  EXPECT_EQ(Passwords().Decipher(std::wstring(value.begin(), value.end())), L"hunter2");

  for (const auto& [bad, reason] : {std::pair{"printf ''", "no password given"},
                                    {"printf 'two\\nlines\\n'", "is one line"},
                                    {"printf '\\377'", "UTF-8"},
                                    {"head -c 32769 /dev/zero | tr '\\0' x", "too long: 32769"}}) {
    const Finished refused = RunShell(bad + (" | " + program) + " encipher " + key);
    EXPECT_EQ(refused.status, 1) << bad;
    EXPECT_THAT(refused.output, testing::HasSubstr(reason));
    EXPECT_THAT(refused.output, testing::StartsWith("pxsecret: "));
  }
  EXPECT_EQ(RunShell(program + " encipher " + first_.Path("missing") + " </dev/null").status, 1);
  EXPECT_EQ(RunShell(program + " encipher " + key + " hunter2").status, 2);
  EXPECT_EQ(RunShell(program + " --help").status, 0);
}

}  // namespace
}  // namespace pxscheduler
