#pragma once

#include <optional>
#include <string>
#include <utility>

#include "unit/network/net_manage_fixture.h"

namespace vantile::testing {

using Reads = std::pair<std::size_t, std::size_t>;

/// Two services, the first of them primary.
class Queries : public Manage {
 protected:
  Queries() {
    order({"A", "B"});
    add("A", "en0");
    add("B", "fw0");
    primary("A", "en0");
  }
  std::optional<bool> isUp(const std::string& name) { return manage().isUpWithinterfaceName(name); }
};

}  // namespace vantile::testing
