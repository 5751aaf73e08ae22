#pragma once

#include <unistd.h>

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "vantile/network/net_manage.h"

#include "live/private_links.h"
#include "live/system_calls.h"

namespace vantile::testing {

inline constexpr const char* countQueries = "count-queries";

/// Asks `NetManage` all that it keeps answers to, once.
inline void askEverything(NetManage& manage, const std::vector<std::string>& services,
                          const std::vector<std::string>& names) {
  manage.queryInterfaceLists();
  manage.queryMainInterfaceName();
  manage.queryMainServiceID();
  manage.interfaceConfigWithName(std::nullopt);
  for (const auto& service : services) {
    manage.queryInterfaceNameWithServiceID(service);
    manage.queryUnderlyingInterfaceNameWithServiceID(service);
    manage.querySpeedWithServiceID(service);
    manage.sysconfigValueForKey("Setup:/Network/Service/" + service + "/Interface");
  }
  for (const auto& name : names) {
    manage.queryServiceWithInterfaceName(name);
    manage.interfaceConfigWithName(name);
    manage.isUpWithinterfaceName(name);
  }
}

/// Prints how many system calls a thousand rounds of all queries make, among links that stay as
/// they are, and how many there are once one is made: that is counted, too. Ends the process: with
/// 0 where that is none and one, 2 where it can't be tried here.
[[noreturn]] inline void runCountedQueries() {
  constexpr int rounds = 1000, pairs = 5;
  const auto refused = [](const char* what) {
    std::printf("no %s here\n", what);
    std::fflush(stdout);
    ::_exit(2);
  };
  // Of this name they are Ethernet, whose speed is kept, too.
  constexpr const char* ethernet = "link add en0 type veth peer name en1\nlink set en0 up\n";
  if (!moveToPrivateLinks(pairs, ethernet)) refused("private links");
  const auto manage = NetManage::init();
  const auto list = manage ? manage->queryInterfaceLists() : nullptr;
  if (!list || list->size() != 2 * pairs + 2) refused("configuration");
  std::vector<std::string> services, names = {"primary", "lo", "en4", "ppp0"};
  for (const auto& each : *list) {
    const auto& entry = **each.as<std::shared_ptr<Dictionary>>();
    services.push_back(*entry.text(keys::service_id));
    names.push_back(*entry.text(keys::device_name));
  }
  askEverything(*manage, services, names);
  if (!SystemCalls::count()) refused("filter of system calls");
  for (int round = 0; round < rounds; ++round) askEverything(*manage, services, names);
  const int made = SystemCalls::counted(), latest = SystemCalls::latest();
  ::getppid();
  const int withOneMore = SystemCalls::counted() - made;
  char text[160] = {};
  const int size =
      std::snprintf(text, sizeof text,
                    "%d system calls in %d rounds of all queries, the last one number %d; "
                    "%d where one is made\n",
                    made, rounds, latest, withOneMore);
  SystemCalls::end({text, static_cast<std::size_t>(size)}, made == 0 && withOneMore == 1 ? 0 : 1);
}

}  // namespace vantile::testing
