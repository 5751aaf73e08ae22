#pragma once

#include <exception>
#include <string>
#include <string_view>
#include <utility>

#include "vantile/foundation/log.h"

namespace vantile {

/// Logs that `where` let `error` out. Part of `guarded`.
inline void logEscaped(std::string_view where, std::string_view error) noexcept {
  try {
    std::string line(where);
    line.append(" threw: ").append(error);
    logLine(line);
  } catch (...) {
    logLine(where);
  }
}

/// Keeps exceptions from travelling on: they become one log line. For code that is not the
/// library's own (a delegate, an observer, a host's callback), and for what a host or the system
/// calls.
template <class Work>
void guarded(std::string_view where, Work&& work) noexcept {
  try {
    std::forward<Work>(work)();
  } catch (const std::exception& error) {
    logEscaped(where, error.what());
  } catch (...) {
    logEscaped(where, "something that is not a std::exception");
  }
}

}  // namespace vantile
