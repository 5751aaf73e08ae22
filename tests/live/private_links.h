#pragma once

#include <sched.h>

#include <cstdio>

namespace vantile::testing {

/// Moves the calling thread to a network namespace of its own, with that many pairs of links that
/// are up, "a0" and "b0" the first; "a0" has an address and leads out. `furtherOrders` are of
/// ip(8), a line each. False where the system refuses.
inline bool moveToPrivateLinks(int pairs, const char* furtherOrders = "") {
  if (::unshare(CLONE_NEWNET) != 0) return false;
  FILE* const ip = ::popen("ip -batch -", "w");
  if (!ip) return false;
  for (int pair = 0; pair < pairs; ++pair)
    std::fprintf(ip, "link add a%d type veth peer name b%d\nlink set a%d up\nlink set b%d up\n",
                 pair, pair, pair, pair);
  std::fputs("address add 10.2.0.2/24 dev a0\nroute add default via 10.2.0.1 dev a0\n", ip);
  std::fputs(furtherOrders, ip);
  return ::pclose(ip) == 0;
}

}  // namespace vantile::testing
