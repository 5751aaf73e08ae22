#pragma once

#include <gtest/gtest.h>
#include <linux/rtnetlink.h>
#include <sys/eventfd.h>
#include <systemd/sd-event.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

#include "fakes/stepped_loop.h"
#include "loop/played_session.h"

namespace vantile::testing {

using namespace std::chrono_literals;

inline std::string newLink(std::uint32_t index, const std::string& name,
                           std::uint32_t flags = running) {
  return message(RTM_NEWLINK, linkPayload(index, name, flags));
}
inline std::string routeTold(std::uint32_t index, std::string_view by) {
  return message(RTM_NEWROUTE, defaultRoutePayload(index, 100, by));
}

/// A session on a loop whose time a test moves on.
struct SteppedSession : ::testing::Test {
  void open() {
    ASSERT_TRUE(it.open());
    forget();
  }
  void forget() {
    it.kernel.requests.clear();
    it.routesAsked.clear();
    it.told = 0;
  }
  /// Lets the session hear what the kernel told.
  void hear() {
    sd_event* event = nullptr;
    ASSERT_GE(sd_event_default(&event), 0);
    while (sd_event_run(event, 0) > 0) {
      eventfd_t ignored = 0;
      ::eventfd_read(it.counter.get(), &ignored);
    }
    sd_event_unref(event);
  }
  void tell(const std::string& datagram) {
    it.tell(datagram);
    hear();
  }
  void settle() { loop.advance(25ms); }
  auto routesAsked(AddressFamily family) const {
    return std::count(it.routesAsked.begin(), it.routesAsked.end(), family);
  }

  SteppedLoop loop;
  PlayedSession it;
};

}  // namespace vantile::testing
