#include "vantile/platform/linux/descriptor_source.h"

#include <fcntl.h>
#include <sys/epoll.h>
#include <systemd/sd-event.h>

#include <atomic>
#include <cerrno>
#include <system_error>
#include <utility>

#include "vantile/foundation/guard.h"
#include "vantile/platform/posix/descriptor.h"

namespace vantile {

struct DescriptorSource::Served {
  ~Served() { sd_event_source_disable_unref(source); }

  static int onReady(sd_event_source*, int, std::uint32_t, void* data) {
    auto* served = static_cast<Served*>(data);
    // A call may end the object that it belongs to.
    const auto ready = served->wanted ? served->ready : nullptr;
    if (ready) guarded("a descriptor's call", *ready);
    return 0;
  }

  std::shared_ptr<const std::function<void()>> ready;
  std::atomic<bool> wanted = true;
  sd_event_source* source = nullptr;
};

DescriptorSource::DescriptorSource(int descriptor, std::function<void()> ready)
    : served_(std::make_unique<Served>()), loop_(RunLoop::current().weak_from_this()) {
  const auto checked = [](int result) {
    if (result < 0)
      throw std::system_error(-result, std::generic_category(), "a descriptor on the run loop");
  };
  served_->ready = std::make_shared<const std::function<void()>>(std::move(ready));
  Descriptor duplicate(::fcntl(descriptor, F_DUPFD_CLOEXEC, 0));
  checked(duplicate ? 0 : -errno);
  sd_event* event = nullptr;
  checked(sd_event_default(&event));
  const int added = sd_event_add_io(event, &served_->source, duplicate.get(), EPOLLIN,
                                    Served::onReady, served_.get());
  sd_event_unref(event);
  checked(added);
  sd_event_source_set_io_fd_own(served_->source, 1);
  duplicate.release();
}

DescriptorSource::~DescriptorSource() {
  const auto loop = loop_.lock();
  if (!loop || thread_ == std::this_thread::get_id()) return;
  // sd-event is not thread-safe: the loop's own thread lets go.
  served_->wanted = false;
  loop->post([served = std::shared_ptr<Served>(std::move(served_))] {});
}

}  // namespace vantile
