#pragma once

#include <mutex>

#include "fakes/fakes.h"

/// What the fakes share among themselves.
namespace fakes {

extern std::mutex mutex;  // over everything below and the fakes' own state
extern Live counts;
extern std::chrono::nanoseconds sinceStart;
extern int wakeupCount;

/// Whether that is a port's name and the right to it is there, too.
bool isHost(std::uint32_t name);
bool isProcessorSet(std::uint32_t name);
bool isMainPort(std::uint32_t name);

}  // namespace fakes
