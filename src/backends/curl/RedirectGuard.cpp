#include "backends/curl/RedirectGuard.h"

#include "backends/curl/HostQueue.h"

namespace xel {
namespace {

AddressZone zoneOfHop(const RedirectGuard::Hop& hop, std::string_view origin) {
  const auto port = origin.substr(origin.rfind(':') + 1);
  if (port != std::to_string(hop.port)) return AddressZone::internet;
  // Each address of this machine is reached from that very address.
  if (hop.address == hop.localAddress) return AddressZone::machine;
  return zoneOf(hop.address);
}

std::string_view nameOf(AddressZone zone) {
  switch (zone) {
    case AddressZone::machine:
      return "this machine";
    case AddressZone::link:
      return "the local link";
    case AddressZone::network:
      return "a private network";
    case AddressZone::internet:
      break;
  }
  return "the internet";
}

}  // namespace

bool RedirectGuard::allows(const Hop& hop) {
  if (rule_ == RedirectRule::anywhere) return true;
  const std::string origin = HostQueue::originOf(std::string(hop.url));
  const bool isSecure = origin.starts_with("https:");
  const AddressZone zone = zoneOfHop(hop, origin);
  if (hop.isRedirect) {
    const std::string reason = reasonAgainst(isSecure, zone);
    if (!reason.empty()) {
      refusal_ = "The redirect to " + origin + " is refused: " + reason + '.';
      return false;
    }
  }
  wasSecure_ = isSecure;
  zone_ = zone;
  return true;
}

std::string RedirectGuard::reasonAgainst(bool isSecure, AddressZone zone) const {
  if (rule_ == RedirectRule::none) return "none is followed";
  if (!isSecure && rule_ == RedirectRule::httpsOnly) return "only https is followed";
  if (!isSecure && wasSecure_ && !isPing_) return "it leads from https to http";
  if (zone < zone_) {
    return "it leads from " + std::string(nameOf(zone_)) + " to " + std::string(nameOf(zone));
  }
  return {};
}

}  // namespace xel
