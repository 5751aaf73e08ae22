#pragma once

#include <mutex>

#include "fakes/fakes.h"

/// What the fakes share among themselves.
namespace fakes {

extern std::mutex mutex;  // over everything below and the fakes' own state
extern Live counts;
extern std::chrono::nanoseconds sinceStart;
extern int wakeupCount;

}  // namespace fakes
