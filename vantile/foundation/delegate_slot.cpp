#include "vantile/foundation/delegate_slot.h"

#include <vector>

namespace vantile {

void keepForGood(std::shared_ptr<const void> object) noexcept {
  if (!object) return;
  guarded("keeping an object", [&object] {
    static auto& mutex = *new std::mutex;
    static auto& kept = *new std::vector<std::shared_ptr<const void>>;
    const std::lock_guard lock(mutex);
    kept.push_back(std::move(object));
  });
}

}  // namespace vantile
