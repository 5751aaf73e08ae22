#include "vantile/platform/linux/descriptor_source.h"

#include <fcntl.h>
#include <sys/epoll.h>
#include <systemd/sd-event.h>

#include <atomic>
#include <cerrno>
#include <system_error>
#include <utility>
#include <vector>

#include "vantile/foundation/guard.h"
#include "vantile/platform/posix/descriptor.h"

namespace vantile {

struct DescriptorSource::Served {
  /// Loop thread.
  void release() { source = sd_event_source_disable_unref(source); }

  static int onReady(sd_event_source*, int, std::uint32_t, void* data) {
    auto* served = static_cast<Served*>(data);
    // A call may end the object that it belongs to.
    const auto ready = served->wanted ? served->ready : nullptr;
    if (ready) guarded("a descriptor's call", *ready);
    return 0;
  }

  /// Whatever is served on the thread when it ends. A source that stayed would keep sd-event's
  /// loop, which clears a variable of its thread's when it goes.
  struct OfThread {
    ~OfThread() {
      for (const auto& each : all)
        if (const auto served = each.lock()) served->release();
    }
    std::vector<std::weak_ptr<Served>> all;
  };

  std::shared_ptr<const std::function<void()>> ready;
  std::atomic<bool> wanted = true;
  sd_event_source* source = nullptr;
};

DescriptorSource::DescriptorSource(int descriptor, std::function<void()> ready)
    : served_(std::make_shared<Served>()), loop_(RunLoop::current().weak_from_this()) {
  const auto checked = [](int result) {
    if (result < 0)
      throw std::system_error(-result, std::generic_category(), "a descriptor on the run loop");
  };
  thread_local Served::OfThread served;
  std::erase_if(served.all, [](const auto& each) { return each.expired(); });
  served.all.push_back(served_);
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
  if (thread_ == std::this_thread::get_id()) {
    served_->release();
    return;
  }
  served_->wanted = false;
  // sd-event is not thread-safe: the loop's own thread lets go, if it did not do so at its end.
  if (const auto loop = loop_.lock())
    loop->post([served = std::move(served_)] { served->release(); });
}

}  // namespace vantile
