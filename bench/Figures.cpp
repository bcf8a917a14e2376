#include "bench/Figures.h"

#include <algorithm>
#include <limits>

namespace xel::bench {

void Results::add(const std::string& benchmark, const std::string& quantity, double value) {
  double& kept = values_[benchmark].try_emplace(quantity, value).first->second;
  kept = quantity == "time" ? std::min(kept, value) : value;
}

double Results::counter(const std::string& benchmark, const std::string& name) const {
  const auto found = values_.find(benchmark);
  const auto value = found == values_.end() ? std::map<std::string, double>::const_iterator()
                                            : found->second.find(name);
  if (found == values_.end() || value == found->second.end()) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  return value->second;
}

std::vector<Figure>& figures() {
  static std::vector<Figure> all;
  return all;
}

}  // namespace xel::bench
