#include "main_thread_sink.h"

#include <vantile/foundation/queue.h>

#include <thread>

namespace vantile::host {

ReportSink onMainThread(const std::shared_ptr<const ReportSink>& sink) {
  const auto deliver = [weak = std::weak_ptr(sink)](const Report& report) {
    if (const auto held = weak.lock()) (*held)(report);
  };
  return [deliver, main = std::this_thread::get_id()](const Report& report) {
    if (std::this_thread::get_id() == main) return deliver(report);
    Queue::main().async([deliver, report] { deliver(report); });
  };
}

}  // namespace vantile::host
