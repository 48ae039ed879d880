#include "platform/digests.h"

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

// Other texts go through the mechanisms that a server checks; some libraries take no empty ones.
TEST(DigestsTest, EmptyTexts) {
  EXPECT_EQ(Hexadecimal(HmacMd5("", "")), "74e6f7298a9c2d168935f58c001bad88");
  EXPECT_EQ(Hexadecimal(HmacSha256("", "")),
            "b613679a0814d9ec772f95d778c35fc5ff1697c493715653c6c712144292c5ad");
  EXPECT_EQ(Hexadecimal(Pbkdf2Sha256("", "salt", 4096)),
            "ea25800b7cc40c98aa4f4ec410701524d18901c70cd8e1ee5650fd978ecbaa10");
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
