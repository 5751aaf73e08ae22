#include "vantile/platform/interface_counters.h"

#include <net/route.h>
#include <sys/socket.h>
#include <sys/sysctl.h>

#include <array>
#include <new>

#include "vantile/platform/parsers/routing_messages.h"

namespace vantile {
namespace {

class MacosInterfaceCounters final : public InterfaceCounters {
 public:
  bool read(InterfaceReadings& into) override {
    std::array<int, 6> name = {CTL_NET, PF_ROUTE, 0, 0, NET_RT_IFLIST, 0};
    const auto depth = static_cast<unsigned>(name.size());
    std::size_t size = 0;
    if (::sysctl(name.data(), depth, nullptr, &size, nullptr, 0) != 0) return false;
    if (!grow(size)) return false;
    if (::sysctl(name.data(), depth, buffer_.get(), &size, nullptr, 0) != 0) return false;
    parseRoutingMessages({buffer_.get(), size}, into);
    return true;
  }

 private:
  /// Makes the buffer that large, if it is not. Without a buffer none is left.
  bool grow(std::size_t size) {
    if (buffer_ && size_ >= size) return true;
    buffer_.reset();
    size_ = 0;
    buffer_.reset(new (std::nothrow) char[size]);
    if (!buffer_) return false;
    size_ = size;
    return true;
  }

  std::unique_ptr<char[]> buffer_;
  std::size_t size_ = 0;
};

}  // namespace

std::unique_ptr<InterfaceCounters> makeInterfaceCounters() {
  return std::make_unique<MacosInterfaceCounters>();
}

}  // namespace vantile
