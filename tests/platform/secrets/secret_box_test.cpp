#include "platform/secrets/secret_box.h"

#include <gmock/gmock.h>

namespace pxscheduler {
namespace {

TEST(SecretBox, DeciphersWhatItEnciphered) {
  const SecretKey key = *SecretKey::Random();
  for (const std::string password : {"", "hunter2", "gr\xC3\xBC\xC3\x9F \"quoted\" \\"}) {
    const std::string value = *Encipher(key, password);
    EXPECT_THAT(value, testing::StartsWith("v1:"));
    EXPECT_NE(value, *Encipher(key, password)) << "the nonce is used twice";
    EXPECT_EQ(Decipher(key, value), password);
    EXPECT_EQ(Decipher(*SecretKey::Random(), value), std::nullopt);
  }
}

// A value made by another implementation of the same cipher.
TEST(SecretBox, KnowsTheFormat) {
  const auto key = SecretKey::FromText("AAECAwQFBgcICQoLDA0ODxAREhMUFRYXGBkaGxwdHh8=");
  ASSERT_TRUE(key);
  EXPECT_EQ(Decipher(*key, "v1:AAECAwQFBgcICQoLL3e4b6CX8NkNHQ/Bscr2Jq9vK5EOgZk="), "hunter2");
}

TEST(SecretBox, RefusesEveryChange) {
  const SecretKey key = *SecretKey::Random();
  const std::string value = *Encipher(key, "a password of some length");
  for (std::size_t i = 0; i < value.size(); ++i) {
    std::string changed = value;
    changed[i] = changed[i] == 'A' ? 'B' : 'A';
    EXPECT_EQ(Decipher(key, changed), std::nullopt) << i;
    EXPECT_EQ(Decipher(key, value.substr(0, i)), std::nullopt) << i;
  }
  for (const std::string& changed : {value + "=", value + "AAAA", value + "\n", " " + value,
                                     "v1:" + value, std::string("v1:"), std::string("v1:====")})
    EXPECT_EQ(Decipher(key, changed), std::nullopt) << changed;
}

TEST(SecretKey, ReadsOnlyKeys) {
  const std::string text = SecretKey::Random()->Text();
  EXPECT_EQ(SecretKey::FromText(text)->Text(), text);
  for (const std::string& other : {std::string(), text.substr(4), text + "AAAA",
                                   text.substr(0, 43) + "\n", "!" + text.substr(1)})
    EXPECT_FALSE(SecretKey::FromText(other)) << other;
}

}  // namespace
}  // namespace pxscheduler
