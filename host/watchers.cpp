#include "watchers.h"

#include <vantile/watchers/watch_application.h>
#include <vantile/watchers/watch_download.h>
#include <vantile/watchers/watch_trash.h>

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <utility>

#include "dashboard/events_pane.h"
#include "main_thread_sink.h"

namespace vantile::host {
namespace {

/// A watcher of the library's with a delegate of ours. The shared instances outlive us, so the
/// delegate is taken back at the end; what it still tells on another thread then goes nowhere.
template <class Watcher>
class Watching final : public RunningMonitor {
 public:
  Watching(std::shared_ptr<Watcher> watcher, std::shared_ptr<const ReportSink> sink)
      : watcher_(std::move(watcher)), sink_(std::move(sink)) {}
  ~Watching() override {
    watcher_->stopWatch();
    watcher_->setDelegate(nullptr);
  }
  Watching(const Watching&) = delete;
  Watching& operator=(const Watching&) = delete;

  /// `describe` fills in a delegate that tells the sink it is given.
  template <class Delegate, class Describe>
  static std::unique_ptr<RunningMonitor> start(ReportSink sink, Describe describe) {
    auto watcher = Watcher::singleton();
    if (!watcher) return nullptr;
    auto kept = std::make_shared<const ReportSink>(std::move(sink));
    auto delegate = std::make_shared<Delegate>();
    describe(*delegate, onMainThread(kept));
    watcher->setDelegate(std::move(delegate));
    auto running = std::make_unique<Watching>(watcher, std::move(kept));
    // No stop flag: all traversals are on this thread, where nothing could set it meanwhile.
    watcher->startWatch(nullptr);
    return running;
  }

 private:
  std::shared_ptr<Watcher> watcher_;
  std::shared_ptr<const ReportSink> sink_;
};

}  // namespace

std::unique_ptr<RunningMonitor> startDownloads(ReportSink sink) {
  return Watching<WatchDownload>::start<DownloadWatchDelegate>(
      std::move(sink), [](DownloadWatchDelegate& delegate, const ReportSink& report) {
        delegate.downloadFileCompleted = [report](const std::optional<std::string>& path) {
          report({"downloads", "downloadFileCompleted", {argument(path)}});
        };
      });
}

std::unique_ptr<RunningMonitor> startApplications(ReportSink sink) {
  return Watching<WatchApplication>::start<ApplicationsWatchDelegate>(
      std::move(sink), [](ApplicationsWatchDelegate& delegate, const ReportSink& report) {
        delegate.appAdded = [report](const std::string& path) {
          report({"applications", "appAdded", {argument(path)}});
        };
        delegate.movedToTrash = [report](const std::string& path) {
          report({"applications", "movedToTrash", {argument(path)}});
        };
      });
}

std::unique_ptr<RunningMonitor> startTrash(ReportSink sink) {
  return Watching<WatchTrash>::start<TrashWatchDelegate>(
      std::move(sink), [](TrashWatchDelegate& delegate, const ReportSink& report) {
        delegate.trashAddedApp = [report](const std::string& path) {
          report({"trash", "trashAddedApp", {argument(path)}});
        };
        delegate.trashUsedSizeChanged = [report](std::uint64_t bytes) {
          report({"trash", "trashUsedSizeChanged", {bytes}});
        };
      });
}

PaneGroup eventPanes() {
  const auto events = std::make_shared<Events>();
  PaneGroup group;
  group.panes.push_back(std::make_unique<EventsPane>(events));
  group.take = [events](const Report& report) { events->take(report, std::time(nullptr)); };
  return group;
}

}  // namespace vantile::host
