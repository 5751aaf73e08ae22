#include "vantile/platform/parsers/resolv_conf.h"

#include <arpa/inet.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "fuzz/fuzzer.h"

namespace vantile::fuzz {

void consume(std::string_view input) {
  const auto servers = parseResolvConf(input);
  require(servers.size() <= split(input, '\n').size(), "a line names a server at most");
  require(std::set<std::string>(servers.begin(), servers.end()).size() == servers.size(),
          "a server counts once");
  for (const auto& server : servers) {
    require(input.find(server) != input.npos, "a server stands in the text");
    char bytes[16];
    const auto number = server.substr(0, server.find('%'));
    require(::inet_pton(AF_INET, server.c_str(), bytes) == 1 ||
                ::inet_pton(AF_INET6, number.c_str(), bytes) == 1,
            "a server is an address");
  }
  // What was read, written as a program would, is read again behind whatever whole lines.
  std::string text(input);
  text += '\n';
  for (const auto& server : servers) text += "nameserver " + server + "\n";
  require(parseResolvConf(text) == servers, "what was written is read again");
  std::vector<std::string> stubs(1, "127.0.0.53");
  require(areStubs(stubs), "the stub is one");
  stubs.insert(stubs.end(), servers.begin(), servers.end());
  const bool onlyStubs = std::all_of(servers.begin(), servers.end(), [](const auto& each) {
    return each == "127.0.0.53" || each == "127.0.0.54";
  });
  require(areStubs(stubs) == onlyStubs, "one server of another kind is enough");
}

}  // namespace vantile::fuzz
