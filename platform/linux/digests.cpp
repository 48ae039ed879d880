#include "platform/digests.h"

#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/rand.h>
#include <unistd.h>

#include <algorithm>
#include <new>

namespace pxscheduler {

namespace {

constexpr int kSha256Size = 32;

unsigned char* Bytes(std::string& text) { return reinterpret_cast<unsigned char*>(text.data()); }

const unsigned char* Bytes(std::string_view text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

std::string Hmac(const EVP_MD* digest, std::string_view key, std::string_view text) {
  std::string result(EVP_MAX_MD_SIZE, '\0');
  unsigned int size = 0;
  if (HMAC(digest, key.data(), static_cast<int>(key.size()), Bytes(text), text.size(),
           Bytes(result), &size) == nullptr)
    throw std::bad_alloc();
  result.resize(size);
  return result;
}

}  // namespace

std::string HmacMd5(std::string_view key, std::string_view text) {
  return Hmac(EVP_md5(), key, text);
}

std::string HmacSha256(std::string_view key, std::string_view text) {
  return Hmac(EVP_sha256(), key, text);
}

std::string Sha256(std::string_view text) {
  std::string result(kSha256Size, '\0');
  if (EVP_Digest(text.data(), text.size(), Bytes(result), nullptr, EVP_sha256(), nullptr) != 1)
    throw std::bad_alloc();
  return result;
}

std::string Pbkdf2Sha256(std::string_view password, std::string_view salt, int iterations) {
  std::string result(kSha256Size, '\0');
  if (PKCS5_PBKDF2_HMAC(password.data(), static_cast<int>(password.size()), Bytes(salt),
                        static_cast<int>(salt.size()), iterations, EVP_sha256(), kSha256Size,
                        Bytes(result)) != 1)
    throw std::bad_alloc();
  return result;
}

// Asks the system itself: starting OpenSSL's generator costs milliseconds, which a run that needs
// neither TLS nor a challenge does not have to spend before its first message.
std::string RandomBytes(std::size_t size) {
  constexpr std::size_t kLargestRequest = 256;  // of getentropy
  std::string result(size, '\0');
  std::size_t filled = 0;
  while (filled < size) {
    const std::size_t count = std::min(kLargestRequest, size - filled);
    if (getentropy(result.data() + filled, count) != 0) break;
    filled += count;
  }
  if (filled < size && RAND_bytes(Bytes(result), static_cast<int>(size)) != 1)
    throw std::bad_alloc();
  return result;
}

}  // namespace pxscheduler
