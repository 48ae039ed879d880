#include "platform/secrets/aes_gcm.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/rand.h>

#include <memory>

namespace pxscheduler {
namespace {

struct ContextCloser {
  void operator()(EVP_CIPHER_CTX* context) const { EVP_CIPHER_CTX_free(context); }
};
using CipherContext = std::unique_ptr<EVP_CIPHER_CTX, ContextCloser>;

unsigned char* BytesOf(std::string& text) { return reinterpret_cast<unsigned char*>(text.data()); }
const unsigned char* BytesOf(std::string_view text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

constexpr int kTagLength = static_cast<int>(AesGcm::kTagBytes);

}  // namespace

bool AesGcm::Seal(Key key, std::string_view nonce, std::string_view clear_text,
                  std::string& sealed) {
  sealed.assign(clear_text.size() + kTagBytes, '\0');
  unsigned char* const tag = BytesOf(sealed) + clear_text.size();
  const CipherContext context(EVP_CIPHER_CTX_new());
  int written = 0;
  return context != nullptr &&
         EVP_EncryptInit_ex(context.get(), EVP_aes_256_gcm(), nullptr, key.data(),
                            BytesOf(nonce)) == 1 &&
         EVP_EncryptUpdate(context.get(), BytesOf(sealed), &written, BytesOf(clear_text),
                           static_cast<int>(clear_text.size())) == 1 &&
         EVP_EncryptFinal_ex(context.get(), tag, &written) == 1 &&
         EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_GCM_GET_TAG, kTagLength, tag) == 1;
}

bool AesGcm::Open(Key key, std::string_view nonce, std::string_view sealed,
                  std::string& clear_text) {
  const std::size_t length = sealed.size() - kTagBytes;
  std::string tag(sealed.substr(length));
  clear_text.assign(length + 1, '\0');  // the cipher asks for a place even for no bytes
  const CipherContext context(EVP_CIPHER_CTX_new());
  int written = 0;
  const bool done =
      context != nullptr &&
      EVP_DecryptInit_ex(context.get(), EVP_aes_256_gcm(), nullptr, key.data(), BytesOf(nonce)) ==
          1 &&
      EVP_DecryptUpdate(context.get(), BytesOf(clear_text), &written, BytesOf(sealed),
                        static_cast<int>(length)) == 1 &&
      EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_GCM_SET_TAG, kTagLength, tag.data()) == 1 &&
      EVP_DecryptFinal_ex(context.get(), BytesOf(clear_text) + length, &written) == 1;
  if (!done) WipeMemory({BytesOf(clear_text), clear_text.size()});
  clear_text.resize(done ? length : 0);
  return done;
}

bool FillWithRandomBytes(std::span<unsigned char> bytes) {
  return RAND_priv_bytes(bytes.data(), static_cast<int>(bytes.size())) == 1;
}

void WipeMemory(std::span<unsigned char> bytes) { OPENSSL_cleanse(bytes.data(), bytes.size()); }

}  // namespace pxscheduler
