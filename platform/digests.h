#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace pxscheduler {

// Keyed hashes (RFC 2104) and what the challenge mechanisms need besides. Results are raw bytes.
std::string HmacMd5(std::string_view key, std::string_view text);
std::string HmacSha256(std::string_view key, std::string_view text);
std::string Sha256(std::string_view text);
// PBKDF2 (RFC 8018) with HMAC-SHA-256 and one block of output.
std::string Pbkdf2Sha256(std::string_view password, std::string_view salt, int iterations);

// Bytes that nobody can guess.
std::string RandomBytes(std::size_t size);

}  // namespace pxscheduler
