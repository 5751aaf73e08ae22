#pragma once

#include <memory>
#include <thread>
#include <utility>

#include "vantile/foundation/run_loop.h"

namespace vantile {

/// `made`, which belongs to the calling thread's run loop and may end nowhere else, to be held and
/// let go of on any thread. Let go of on another one, it ends once the loop serves that, after the
/// call that the loop is in; with the thread where that comes first; at once where there is no such
/// thread any more.
template <class Made>
std::shared_ptr<Made> endingOnLoop(std::unique_ptr<Made> made) {
  const auto end = [thread = std::this_thread::get_id(),
                    weak = RunLoop::current().weak_from_this()](Made* last) {
    std::unique_ptr<Made> held(last);
    if (thread == std::this_thread::get_id()) return;
    if (const auto loop = weak.lock())
      loop->post([shared = std::shared_ptr<Made>(std::move(held))] {});
  };
  return made ? std::shared_ptr<Made>(made.release(), end) : nullptr;
}

}  // namespace vantile
