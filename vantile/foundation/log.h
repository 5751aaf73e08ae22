#pragma once

#include <functional>
#include <string_view>

#include "vantile/foundation/api.h"

namespace vantile {

/// Receives the library's log lines, one a call, without the newline. Called on whichever thread
/// logs, one call at a time.
using LogSink = std::function<void(std::string_view line)>;

/// Replaces the sink. An empty one restores the default, which writes to standard error. When the
/// call returns, the old sink is no longer in use. Not to be called from inside a sink. Any thread.
VANTILE_API void setLogSink(LogSink sink);

/// Hands one line to the sink. A sink that throws is ignored; what is logged from inside the
/// sink goes to standard error. Any thread.
VANTILE_API void logLine(std::string_view line) noexcept;

}  // namespace vantile
