#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace pxscheduler {

// AES-256-GCM (NIST SP 800-38D) without additional data, by the machine's cryptographic library.
struct AesGcm {
  static constexpr std::size_t kKeyBytes = 32;
  static constexpr std::size_t kNonceBytes = 12;
  static constexpr std::size_t kTagBytes = 16;

  using Key = std::span<const unsigned char, kKeyBytes>;

  // Sets `sealed` to the ciphertext and the tag. False where the cipher is not available.
  static bool Seal(Key key, std::string_view nonce, std::string_view clear_text,
                   std::string& sealed);
  // The way back; false also where the tag does not fit, with nothing left in `clear_text`.
  static bool Open(Key key, std::string_view nonce, std::string_view sealed,
                   std::string& clear_text);
};

// Fills the bytes from the system's random source. False where that fails.
bool FillWithRandomBytes(std::span<unsigned char> bytes);

// Overwrites memory that held a secret.
void WipeMemory(std::span<unsigned char> bytes);

}  // namespace pxscheduler
