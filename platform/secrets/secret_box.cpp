#include "platform/secrets/secret_box.h"

#include <algorithm>

#include "platform/secrets/aes_gcm.h"
#include "text/base64.h"

namespace pxscheduler {
namespace {

constexpr std::size_t kMostBytes = 2 * kMostEncipheredBytes;  // of a value

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
  WipeMemory(other.bytes_);
}

SecretKey::~SecretKey() { WipeMemory(bytes_); }

std::optional<SecretKey> SecretKey::Random() {
  SecretKey key;
  if (!FillWithRandomBytes(key.bytes_)) return std::nullopt;
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
  if (clear_text.size() > kMostEncipheredBytes) return std::nullopt;
  std::array<unsigned char, AesGcm::kNonceBytes> random{};
  if (!FillWithRandomBytes(random)) return std::nullopt;
  const std::string nonce(random.begin(), random.end());
  std::string sealed;
  if (!AesGcm::Seal(key.Bytes(), nonce, clear_text, sealed)) return std::nullopt;
  return std::string(kEncipheredPrefix) + EncodeBase64(nonce + sealed);
}

std::optional<std::string> Decipher(const SecretKey& key, std::string_view value) {
  if (!value.starts_with(kEncipheredPrefix)) return std::nullopt;
  const std::optional<std::string> box = FromBase64(value.substr(kEncipheredPrefix.size()));
  if (!box || box->size() < AesGcm::kNonceBytes + AesGcm::kTagBytes) return std::nullopt;
  const std::string_view bytes = *box;
  std::string clear_text;
  if (!AesGcm::Open(key.Bytes(), bytes.substr(0, AesGcm::kNonceBytes),
                    bytes.substr(AesGcm::kNonceBytes), clear_text))
    return std::nullopt;
  return clear_text;
}

void Wipe(std::string& text) {
  WipeMemory({reinterpret_cast<unsigned char*>(text.data()), text.size()});
}

}  // namespace pxscheduler
