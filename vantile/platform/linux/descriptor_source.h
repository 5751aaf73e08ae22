#pragma once

#include <functional>
#include <memory>
#include <thread>

#include "vantile/foundation/run_loop.h"

namespace vantile {

/// Serves one descriptor on the run loop of the thread that made this: `ready` is called there
/// whenever the descriptor can be read, or has failed, until this or the thread goes. The loop has
/// a duplicate, so that the descriptor may be closed at any moment.
class DescriptorSource {
 public:
  /// On the calling thread's loop. Throws std::system_error when the loop takes no more.
  DescriptorSource(int descriptor, std::function<void()> ready);
  /// Any thread. On another one than the loop's, a call that the loop has taken up runs to its end.
  ~DescriptorSource();
  DescriptorSource(const DescriptorSource&) = delete;
  DescriptorSource& operator=(const DescriptorSource&) = delete;

 private:
  struct Served;
  std::shared_ptr<Served> served_;
  std::weak_ptr<RunLoop> loop_;
  const std::thread::id thread_ = std::this_thread::get_id();
};

}  // namespace vantile
