#include "platform/linux/secret_box.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/rand.h>

#include <limits>
#include <memory>

#include "platform/base64.h"

namespace pxscheduler {
namespace {

constexpr std::size_t kNonceBytes = 12;
constexpr std::size_t kTagBytes = 16;
constexpr std::size_t kMostBytes = 65536;  // of a value, far above any password

struct ContextCloser {
  void operator()(EVP_CIPHER_CTX* context) const { EVP_CIPHER_CTX_free(context); }
};
using Context = std::unique_ptr<EVP_CIPHER_CTX, ContextCloser>;

unsigned char* BytesOf(std::string& text) { return reinterpret_cast<unsigned char*>(text.data()); }
const unsigned char* BytesOf(std::string_view text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

// Nothing unless the text is the base64 of some bytes letter by letter.
std::optional<std::string> FromBase64(std::string_view text) {
  if (text.empty() || text.size() > kMostBytes) return std::nullopt;
  std::optional<std::string> bytes = DecodeBase64(text);
  if (!bytes) return std::nullopt;
  std::string again = EncodeBase64(*bytes);
  const bool same = again == text;
  Wipe(again);
  if (same) return bytes;
  Wipe(*bytes);
  return std::nullopt;
}

}  // namespace

SecretKey::SecretKey(SecretKey&& other) noexcept : bytes_(other.bytes_) {
  OPENSSL_cleanse(other.bytes_.data(), kBytes);
}

SecretKey::~SecretKey() { OPENSSL_cleanse(bytes_.data(), kBytes); }

std::optional<SecretKey> SecretKey::Random() {
  SecretKey key;
  if (RAND_priv_bytes(key.bytes_.data(), static_cast<int>(kBytes)) != 1) return std::nullopt;
  return key;
}

std::optional<SecretKey> SecretKey::FromText(std::string_view text) {
  std::optional<std::string> bytes = FromBase64(text);
  if (!bytes) return std::nullopt;
  std::optional<SecretKey> result;
  if (bytes->size() == kBytes) {
    SecretKey key;
    std::copy(bytes->begin(), bytes->end(), key.bytes_.begin());
    result.emplace(std::move(key));
  }
  Wipe(*bytes);
  return result;
}

std::string SecretKey::Text() const {
  return EncodeBase64({reinterpret_cast<const char*>(bytes_.data()), kBytes});
}

std::optional<std::string> Encipher(const SecretKey& key, std::string_view clear_text) {
  if (clear_text.size() > kMostBytes / 2) return std::nullopt;
  std::string sealed(kNonceBytes + clear_text.size() + kTagBytes, '\0');
  unsigned char* const nonce = BytesOf(sealed);
  unsigned char* const ciphertext = nonce + kNonceBytes;
  unsigned char* const tag = ciphertext + clear_text.size();
  const Context context(EVP_CIPHER_CTX_new());
  int written = 0;
  const bool done =
      context != nullptr && RAND_bytes(nonce, static_cast<int>(kNonceBytes)) == 1 &&
      EVP_EncryptInit_ex(context.get(), EVP_aes_256_gcm(), nullptr, key.Bytes(), nonce) == 1 &&
      EVP_EncryptUpdate(context.get(), ciphertext, &written, BytesOf(clear_text),
                        static_cast<int>(clear_text.size())) == 1 &&
      EVP_EncryptFinal_ex(context.get(), tag, &written) == 1 &&
      EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_GCM_GET_TAG, static_cast<int>(kTagBytes), tag) ==
          1;
  if (!done) return std::nullopt;
  return std::string(kEncipheredPrefix) + EncodeBase64(sealed);
}

std::optional<std::string> Decipher(const SecretKey& key, std::string_view value) {
  if (!value.starts_with(kEncipheredPrefix)) return std::nullopt;
  std::optional<std::string> sealed = FromBase64(value.substr(kEncipheredPrefix.size()));
  if (!sealed || sealed->size() < kNonceBytes + kTagBytes) return std::nullopt;
  const std::size_t length = sealed->size() - kNonceBytes - kTagBytes;
  unsigned char* const nonce = BytesOf(*sealed);
  unsigned char* const ciphertext = nonce + kNonceBytes;
  unsigned char* const tag = ciphertext + length;
  std::string clear_text(length + 1, '\0');  // the cipher asks for a place even for no bytes
  const Context context(EVP_CIPHER_CTX_new());
  int written = 0;
  const bool done =
      context != nullptr &&
      EVP_DecryptInit_ex(context.get(), EVP_aes_256_gcm(), nullptr, key.Bytes(), nonce) == 1 &&
      EVP_DecryptUpdate(context.get(), BytesOf(clear_text), &written, ciphertext,
                        static_cast<int>(length)) == 1 &&
      EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_GCM_SET_TAG, static_cast<int>(kTagBytes), tag) ==
          1 &&
      EVP_DecryptFinal_ex(context.get(), BytesOf(clear_text) + length, &written) == 1;
  if (!done) {
    Wipe(clear_text);
    return std::nullopt;
  }
  clear_text.pop_back();
  return clear_text;
}

void Wipe(std::string& text) { OPENSSL_cleanse(text.data(), text.size()); }

}  // namespace pxscheduler
