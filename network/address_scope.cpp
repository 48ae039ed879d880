#include "network/address_scope.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

#include "network/socket_calls.h"

namespace pxscheduler {

namespace {

struct Block {
  std::array<std::uint8_t, 2> first;  // bytes of the address
  std::array<std::uint8_t, 2> mask;
  AddressScope scope;
};

constexpr Block kBlocks4[] = {{{127, 0}, {255, 0}, AddressScope::kThisMachine},
                              {{10, 0}, {255, 0}, AddressScope::kPrivate},
                              {{172, 16}, {255, 240}, AddressScope::kPrivate},
                              {{192, 168}, {255, 255}, AddressScope::kPrivate},
                              {{169, 254}, {255, 255}, AddressScope::kPrivate}};
constexpr Block kBlocks6[] = {{{0xFC, 0}, {0xFE, 0}, AddressScope::kPrivate},
                              {{0xFE, 0x80}, {0xFF, 0xC0}, AddressScope::kPrivate}};

AddressScope ScopeIn(std::span<const Block> blocks, const std::uint8_t* bytes) {
  const auto holds = [bytes](const Block& block) {
    return (bytes[0] & block.mask[0]) == block.first[0] &&
           (bytes[1] & block.mask[1]) == block.first[1];
  };
  const auto found = std::find_if(blocks.begin(), blocks.end(), holds);
  return found == blocks.end() ? AddressScope::kPublic : found->scope;
}

}  // namespace

AddressScope ScopeOf(const std::string& address) {
  const SocketLibrary library;
  std::array<std::uint8_t, sizeof(in6_addr)> bytes{};
  if (inet_pton(AF_INET, address.c_str(), bytes.data()) == 1)
    return ScopeIn(kBlocks4, bytes.data());
  // A zone ("fe80::1%eth0") tells which link, not how far.
  const std::string without_zone = address.substr(0, address.find('%'));
  if (inet_pton(AF_INET6, without_zone.c_str(), bytes.data()) != 1) return AddressScope::kPublic;
  constexpr std::array<std::uint8_t, 12> kMapped{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF};
  if (std::equal(kMapped.begin(), kMapped.end(), bytes.begin()))
    return ScopeIn(kBlocks4, bytes.data() + kMapped.size());
  std::array<std::uint8_t, sizeof(in6_addr)> loopback{};
  loopback.back() = 1;
  return bytes == loopback ? AddressScope::kThisMachine : ScopeIn(kBlocks6, bytes.data());
}

}  // namespace pxscheduler
