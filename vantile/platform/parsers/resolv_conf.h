#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vantile {

/// The servers that resolv.conf(5) names, in order, each once. What is no address is left out.
std::vector<std::string> parseResolvConf(std::string_view text);

/// Whether the only servers are systemd-resolved's own stubs, behind which stand the real ones.
bool areStubs(const std::vector<std::string>& servers);

}  // namespace vantile
