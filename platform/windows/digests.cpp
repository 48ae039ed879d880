#include "platform/digests.h"

#include <windows.h>
// Needs the types of the header above.
#include <bcrypt.h>

#include <memory>
#include <new>

namespace pxscheduler {

namespace {

constexpr std::size_t kMd5Size = 16;
constexpr std::size_t kSha256Size = 32;

void Check(NTSTATUS status) {
  if (!BCRYPT_SUCCESS(status)) throw std::bad_alloc();
}

UCHAR* Bytes(std::string& text) { return reinterpret_cast<UCHAR*>(text.data()); }

// What is only read; the calls are declared without const.
UCHAR* Bytes(std::string_view text) {
  return reinterpret_cast<UCHAR*>(const_cast<char*>(text.data()));
}

ULONG SizeOf(std::string_view text) { return static_cast<ULONG>(text.size()); }

struct CloseAlgorithm {
  void operator()(void* algorithm) const { BCryptCloseAlgorithmProvider(algorithm, 0); }
};
using Algorithm = std::unique_ptr<void, CloseAlgorithm>;

struct DestroyHash {
  void operator()(void* hash) const { BCryptDestroyHash(hash); }
};
using Hash = std::unique_ptr<void, DestroyHash>;

// `flags`: BCRYPT_ALG_HANDLE_HMAC_FLAG or 0.
Algorithm OpenAlgorithm(const wchar_t* name, ULONG flags) {
  BCRYPT_ALG_HANDLE handle = nullptr;
  Check(BCryptOpenAlgorithmProvider(&handle, name, nullptr, flags));
  return Algorithm(handle);
}

std::string Digest(const Algorithm& algorithm, std::string_view key, std::string_view text,
                   std::size_t size) {
  BCRYPT_HASH_HANDLE handle = nullptr;
  Check(BCryptCreateHash(algorithm.get(), &handle, nullptr, 0, key.empty() ? nullptr : Bytes(key),
                         SizeOf(key), 0));
  const Hash hash(handle);
  Check(BCryptHashData(hash.get(), Bytes(text), SizeOf(text), 0));
  std::string result(size, '\0');
  Check(BCryptFinishHash(hash.get(), Bytes(result), SizeOf(result), 0));
  return result;
}

}  // namespace

std::string HmacMd5(std::string_view key, std::string_view text) {
  return Digest(OpenAlgorithm(BCRYPT_MD5_ALGORITHM, BCRYPT_ALG_HANDLE_HMAC_FLAG), key, text,
                kMd5Size);
}

std::string HmacSha256(std::string_view key, std::string_view text) {
  return Digest(OpenAlgorithm(BCRYPT_SHA256_ALGORITHM, BCRYPT_ALG_HANDLE_HMAC_FLAG), key, text,
                kSha256Size);
}

std::string Sha256(std::string_view text) {
  return Digest(OpenAlgorithm(BCRYPT_SHA256_ALGORITHM, 0), {}, text, kSha256Size);
}

std::string Pbkdf2Sha256(std::string_view password, std::string_view salt, int iterations) {
  const Algorithm hmac = OpenAlgorithm(BCRYPT_SHA256_ALGORITHM, BCRYPT_ALG_HANDLE_HMAC_FLAG);
  std::string result(kSha256Size, '\0');
  Check(BCryptDeriveKeyPBKDF2(hmac.get(), Bytes(password), SizeOf(password), Bytes(salt),
                              SizeOf(salt), static_cast<ULONGLONG>(iterations), Bytes(result),
                              SizeOf(result), 0));
  return result;
}

std::string RandomBytes(std::size_t size) {
  std::string result(size, '\0');
  Check(BCryptGenRandom(nullptr, Bytes(result), SizeOf(result), BCRYPT_USE_SYSTEM_PREFERRED_RNG));
  return result;
}

}  // namespace pxscheduler
