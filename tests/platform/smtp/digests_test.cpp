#include "platform/smtp/digests.h"

#include <gtest/gtest.h>

#include <set>

namespace pxscheduler {
namespace {

std::string Hexadecimal(const std::string& bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const char byte : bytes) {
    text += kDigits[static_cast<unsigned char>(byte) >> 4];
    text += kDigits[static_cast<unsigned char>(byte) & 0xF];
  }
  return text;
}

// RFC 2202, RFC 4231, RFC 6234 and RFC 7914; the empty ones as Python's hashlib has them.
TEST(DigestsTest, PublishedValues) {
  const struct {
    std::string digest;
    const char* expected;
  } cases[] = {
      {HmacMd5("Jefe", "what do ya want for nothing?"), "750c783e6ab0b503eaa86e310a5db738"},
      {HmacMd5("", ""), "74e6f7298a9c2d168935f58c001bad88"},
      {HmacSha256("Jefe", "what do ya want for nothing?"),
       "5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843"},
      {HmacSha256("", ""), "b613679a0814d9ec772f95d778c35fc5ff1697c493715653c6c712144292c5ad"},
      {Sha256("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
      {Pbkdf2Sha256("passwd", "salt", 1),
       "55ac046e56e3089fec1691c22544b605f94185216dde0465e68b9d57c20dacbc"},
      {Pbkdf2Sha256("", "salt", 4096),
       "ea25800b7cc40c98aa4f4ec410701524d18901c70cd8e1ee5650fd978ecbaa10"},
  };
  for (const auto& each : cases) EXPECT_EQ(Hexadecimal(each.digest), each.expected);
}

TEST(DigestsTest, RandomBytesAreAsManyAsWantedAndNeverTheSame) {
  std::set<std::string> seen;
  for (int i = 0; i < 100; ++i) {
    const std::string bytes = RandomBytes(300);
    EXPECT_EQ(bytes.size(), 300U);
    EXPECT_TRUE(seen.insert(bytes.substr(0, 16)).second);
    EXPECT_TRUE(seen.insert(bytes.substr(284)).second);
  }
}

}  // namespace
}  // namespace pxscheduler
