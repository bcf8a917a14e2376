#include "backends/curl/AddressZone.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <arpa/inet.h>

namespace xel {
namespace {

/// An IPv6 address; an IPv4 one as its IPv4-mapped form.
using Address = std::array<std::uint8_t, 16>;

Address mapped(const std::uint8_t* bytes) {
  Address address{};
  address[10] = address[11] = 0xFF;
  std::copy_n(bytes, 4, address.begin() + 12);
  return address;
}

std::optional<Address> parsed(std::string_view text) {
  // Without the interface of a link-local address.
  const std::string numeric(text.substr(0, text.find('%')));
  Address address{};
  if (inet_pton(AF_INET6, numeric.c_str(), address.data()) == 1) return address;
  if (inet_pton(AF_INET, numeric.c_str(), address.data()) == 1) return mapped(address.data());
  return std::nullopt;
}

/// The addresses whose first bits are those of one address.
class Block {
 public:
  Block(std::string_view first, std::size_t bits)
      : first_(parsed(first).value()),
        bits_(first.find(':') == std::string_view::npos ? bits + 96 : bits) {}

  bool contains(const Address& address) const {
    const auto whole = static_cast<std::ptrdiff_t>(bits_ / 8);
    const std::size_t left = bits_ % 8;
    return std::equal(first_.begin(), first_.begin() + whole, address.begin()) &&
           (left == 0 || (first_[bits_ / 8] ^ address[bits_ / 8]) >> (8 - left) == 0);
  }

 private:
  Address first_;
  std::size_t bits_;
};

struct ZoneBlock {
  Block block;
  AddressZone zone;
};

const std::vector<ZoneBlock>& zoneBlocks() {
  using enum AddressZone;
  static const std::vector<ZoneBlock> blocks = {
      {{"0.0.0.0", 8}, machine},      {{"127.0.0.0", 8}, machine},   {{"169.254.0.0", 16}, link},
      {{"10.0.0.0", 8}, network},     {{"172.16.0.0", 12}, network}, {{"192.168.0.0", 16}, network},
      {{"100.64.0.0", 10}, network},  {{"192.0.0.0", 24}, network},  {{"198.18.0.0", 15}, network},
      {{"224.0.0.0", 3}, network},    {{"::", 127}, machine},        {{"fe80::", 10}, link},
      {{"fc00::", 7}, network},       {{"fec0::", 10}, network},     {{"ff00::", 8}, network},
      {{"64:ff9b:1::", 48}, network},
  };
  return blocks;
}

/// A block whose addresses hold an IPv4 address, and the byte at which that begins.
struct EmbeddingBlock {
  Block block;
  std::size_t at;
};

const std::vector<EmbeddingBlock>& embeddingBlocks() {
  // IPv4-compatible, NAT64 (RFC 6052), 6to4 (RFC 3056).
  static const std::vector<EmbeddingBlock> blocks = {
      {{"::", 96}, 12}, {{"64:ff9b::", 96}, 12}, {{"2002::", 16}, 2}};
  return blocks;
}

AddressZone zoneOf(const Address& address) {
  for (const auto& [block, zone] : zoneBlocks()) {
    if (block.contains(address)) return zone;
  }
  for (const auto& [block, at] : embeddingBlocks()) {
    if (block.contains(address)) return zoneOf(mapped(address.data() + at));
  }
  return AddressZone::internet;
}

}  // namespace

AddressZone zoneOf(std::string_view address) {
  const auto bytes = parsed(address);
  return bytes ? zoneOf(*bytes) : AddressZone::machine;
}

}  // namespace xel
