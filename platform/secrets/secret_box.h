#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace pxscheduler {

// A key of AES-256. Its memory is wiped when it goes.
class SecretKey {
 public:
  static constexpr std::size_t kBytes = 32;

  SecretKey(const SecretKey&) = delete;
  SecretKey& operator=(const SecretKey&) = delete;
  SecretKey(SecretKey&& other) noexcept;
  SecretKey& operator=(SecretKey&&) = delete;
  ~SecretKey();

  // From the system's random source; nothing where that fails.
  static std::optional<SecretKey> Random();
  // From the text that Text gives. Nothing for any other text.
  static std::optional<SecretKey> FromText(std::string_view text);

  // The key in base64 (RFC 4648).
  std::string Text() const;
  const std::array<unsigned char, kBytes>& Bytes() const { return bytes_; }

 private:
  SecretKey() = default;

  std::array<unsigned char, kBytes> bytes_{};
};

inline constexpr std::size_t kMostEncipheredBytes = 32768;  // far above any password

// "v1:" and the base64 of a fresh nonce of 12 bytes, the ciphertext and the tag of 16 bytes:
// AES-256-GCM (NIST SP 800-38D) without additional data. Nothing where the cipher is not available.
// The text has at most kMostEncipheredBytes.
std::optional<std::string> Encipher(const SecretKey& key, std::string_view clear_text);

// The clear text of such a value; nothing where it is malformed, was changed, or belongs to another
// key.
std::optional<std::string> Decipher(const SecretKey& key, std::string_view value);

inline constexpr std::string_view kEncipheredPrefix = "v1:";

// Overwrites a text that held a secret.
void Wipe(std::string& text);

}  // namespace pxscheduler
