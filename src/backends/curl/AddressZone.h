#pragma once

#include <string_view>

namespace xel {

/// How near an IP address is; what is nearer comes first.
enum class AddressZone {
  machine,   ///< Loopback, and addresses that stand for no interface.
  link,      ///< Link-local: one cable or radio cell.
  network,   ///< Private, shared with the provider (RFC 6598), multicast and reserved addresses.
  internet,  ///< All others.
};

/// The zone of an address as text, by the special-purpose registries of IANA (RFC 6890). An IPv4
/// address within an IPv6 one counts as itself. A text that is no address counts as the nearest.
AddressZone zoneOf(std::string_view address);

}  // namespace xel
