#pragma once

#include <atomic>
#include <cstdint>

namespace vantile {

/// The present value of a stop flag that its owner may set from another thread. A null flag never
/// stops anything and reads as 0.
inline std::int32_t readStopFlag(std::int32_t* flag) noexcept {
  return flag ? std::atomic_ref(*flag).load() : 0;
}

}  // namespace vantile
