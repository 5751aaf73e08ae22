#include "vantile/foundation/log.h"

#include <cstdio>
#include <mutex>
#include <utility>

namespace vantile {
namespace {

struct Sink {
  std::mutex mutex;
  LogSink write;
};

// Never destroyed: a worker may still log while the process ends.
Sink& sink() {
  static auto& instance = *new Sink;
  return instance;
}

void writeToStandardError(std::string_view line) {
  std::fprintf(stderr, "%.*s\n", static_cast<int>(line.size()), line.data());
}

}  // namespace

void setLogSink(LogSink write) {
  const std::lock_guard lock(sink().mutex);
  std::swap(sink().write, write);
}

void logLine(std::string_view line) noexcept {
  thread_local bool inside = false;
  if (inside) return writeToStandardError(line);  // the sink itself has something to say
  inside = true;
  try {
    const std::lock_guard lock(sink().mutex);
    if (sink().write) {
      sink().write(line);
    } else {
      writeToStandardError(line);
    }
  } catch (...) {  // There is nowhere left to report it.
  }
  inside = false;
}

}  // namespace vantile
