#include "platform/secrets/aes_gcm.h"

#include <windows.h>
// Needs the types of the header above.
#include <bcrypt.h>

namespace pxscheduler {
namespace {

UCHAR* BytesOf(std::string& text) { return reinterpret_cast<UCHAR*>(text.data()); }

class GcmKey {
 public:
  explicit GcmKey(AesGcm::Key key) {
    if (::BCryptOpenAlgorithmProvider(&algorithm_, BCRYPT_AES_ALGORITHM, nullptr, 0) != 0) return;
    std::wstring mode = BCRYPT_CHAIN_MODE_GCM;
    if (::BCryptSetProperty(algorithm_, BCRYPT_CHAINING_MODE, reinterpret_cast<UCHAR*>(mode.data()),
                            static_cast<ULONG>((mode.size() + 1) * sizeof(wchar_t)), 0) != 0)
      return;
    std::string secret(key.begin(), key.end());
    if (::BCryptGenerateSymmetricKey(algorithm_, &key_, nullptr, 0, BytesOf(secret),
                                     static_cast<ULONG>(secret.size()), 0) != 0)
      key_ = nullptr;
    ::SecureZeroMemory(secret.data(), secret.size());
  }
  GcmKey(const GcmKey&) = delete;
  GcmKey& operator=(const GcmKey&) = delete;
  ~GcmKey() {
    if (key_ != nullptr) ::BCryptDestroyKey(key_);
    if (algorithm_ != nullptr) ::BCryptCloseAlgorithmProvider(algorithm_, 0);
  }

  bool IsReady() const { return key_ != nullptr; }
  BCRYPT_KEY_HANDLE Get() const { return key_; }

 private:
  BCRYPT_ALG_HANDLE algorithm_ = nullptr;
  BCRYPT_KEY_HANDLE key_ = nullptr;
};

BCRYPT_AUTHENTICATED_CIPHER_MODE_INFO ModeInformation(std::string& nonce, std::string& tag) {
  BCRYPT_AUTHENTICATED_CIPHER_MODE_INFO information;
  BCRYPT_INIT_AUTH_MODE_INFO(information);
  information.pbNonce = BytesOf(nonce);
  information.cbNonce = static_cast<ULONG>(nonce.size());
  information.pbTag = BytesOf(tag);
  information.cbTag = static_cast<ULONG>(tag.size());
  return information;
}

}  // namespace

bool AesGcm::Seal(Key key, std::string_view nonce, std::string_view clear_text,
                  std::string& sealed) {
  const GcmKey cipher(key);
  if (!cipher.IsReady()) return false;
  std::string own_nonce(nonce);
  std::string tag(kTagBytes, '\0');
  auto information = ModeInformation(own_nonce, tag);
  std::string source(clear_text);
  const auto size = static_cast<ULONG>(source.size());
  sealed.assign(source.size(), '\0');
  ULONG written = 0;
  const bool done = ::BCryptEncrypt(cipher.Get(), BytesOf(source), size, &information, nullptr, 0,
                                    BytesOf(sealed), size, &written, 0) == 0;
  ::SecureZeroMemory(source.data(), source.size());
  sealed += tag;
  return done;
}

bool AesGcm::Open(Key key, std::string_view nonce, std::string_view sealed,
                  std::string& clear_text) {
  const GcmKey cipher(key);
  if (!cipher.IsReady()) return false;
  std::string own_nonce(nonce);
  std::string ciphertext(sealed.substr(0, sealed.size() - kTagBytes));
  std::string tag(sealed.substr(ciphertext.size()));
  auto information = ModeInformation(own_nonce, tag);
  const auto size = static_cast<ULONG>(ciphertext.size());
  clear_text.assign(ciphertext.size(), '\0');
  ULONG written = 0;
  const bool done = ::BCryptDecrypt(cipher.Get(), BytesOf(ciphertext), size, &information, nullptr,
                                    0, BytesOf(clear_text), size, &written, 0) == 0;
  if (!done) {
    ::SecureZeroMemory(clear_text.data(), clear_text.size());
    clear_text.clear();
  }
  return done;
}

bool FillWithRandomBytes(std::span<unsigned char> bytes) {
  return ::BCryptGenRandom(nullptr, bytes.data(), static_cast<ULONG>(bytes.size()),
                           BCRYPT_USE_SYSTEM_PREFERRED_RNG) == 0;
}

void WipeMemory(std::span<unsigned char> bytes) { ::SecureZeroMemory(bytes.data(), bytes.size()); }

}  // namespace pxscheduler
