#include "vantile/platform/parsers/resolv_conf.h"

#include <algorithm>

#include "vantile/platform/parsers/text.h"

namespace vantile {
namespace {

/// Whether it has the characters of an IPv4 or IPv6 address, the latter with the link that it
/// holds on, "fe80::1%eth0".
bool looksLikeAddress(std::string_view word) {
  const auto number = word.substr(0, word.find('%'));
  constexpr std::string_view digits = "0123456789", hexadecimals = "0123456789abcdefABCDEF";
  const auto allowed = [](std::string_view text, std::string_view characters, char separator) {
    return std::all_of(text.begin(), text.end(), [&](char each) {
      return each == '.' || each == separator || characters.find(each) != characters.npos;
    });
  };
  if (number.find(':') != number.npos) return allowed(number, hexadecimals, ':');
  return word == number && number.find('.') != number.npos && allowed(number, digits, '.');
}

}  // namespace

std::vector<std::string> parseResolvConf(std::string_view text) {
  std::vector<std::string> servers;
  while (!text.empty()) {
    auto line = takeLine(text);
    if (line.ends_with('\r')) line.remove_suffix(1);
    // The name begins the line; behind the address everything is passed over.
    const auto fields =
        line.starts_with("nameserver") ? words(line) : std::vector<std::string_view>();
    if (fields.size() < 2 || fields[0] != "nameserver" || !looksLikeAddress(fields[1])) continue;
    std::string server(fields[1]);
    if (std::find(servers.begin(), servers.end(), server) == servers.end())
      servers.push_back(std::move(server));
  }
  return servers;
}

bool areStubs(const std::vector<std::string>& servers) {
  return !servers.empty() && std::all_of(servers.begin(), servers.end(), [](const auto& server) {
    return server == "127.0.0.53" || server == "127.0.0.54";
  });
}

}  // namespace vantile
