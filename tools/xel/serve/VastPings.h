#pragma once

#include <map>
#include <string>
#include <vector>

namespace xel::serve {

/// The tracking URLs that a VAST document asks to be requested, by event in lower case: those of
/// its first ad and of that ad's first linear creative. The impressions come first at "start".
/// White space around a URL is not part of it.
///
/// Read with a reader of its own, so that it can stand against what the library makes of the same
/// document. Empty for what is not well-formed.
std::map<std::string, std::vector<std::string>> vastPings(const std::string& vast);

}  // namespace xel::serve
