// download_watch HOME: watches for the downloads of the browsers whose home that is, and tells of
// them, a line each, with a tab between two words:
//   watching
//   notified CODE PATH    notifyDownloadCompletedWithBrowserType was called
//   completed PATH        the delegate was told
// It ends with its standard input.

#include <poll.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>

#include "vantile/foundation/run_loop.h"
#include "vantile/platform/linux/browsers.h"
#include "vantile/platform/linux/standard_folders.h"
#include "vantile/platform/posix/files.h"
#include "vantile/utility/utility_ports.h"
#include "vantile/watchers/shared_watchers.h"
#include "vantile/watchers/watch_download.h"
#include "vantile/watchers/watcher_ports.h"

namespace {

using vantile::WatchDownload;

class ToldWatch final : public WatchDownload {
 public:
  static std::shared_ptr<WatchDownload> make() {
    const std::shared_ptr<ToldWatch> watcher(new ToldWatch);
    watcher->listenToQueue();
    return watcher;
  }

  void notifyDownloadCompletedWithBrowserType(const std::string& path,
                                              std::uint32_t browser) override {
    std::string code;
    for (int shift = 24; shift >= 0; shift -= 8) code += static_cast<char>(browser >> shift & 0xFF);
    std::printf("notified\t%s\t%s\n", code.c_str(), path.c_str());
    WatchDownload::notifyDownloadCompletedWithBrowserType(path, browser);
  }
};

/// The folders are the account's, whatever HOME says; here they are those of `home`.
void moveTo(const std::string& home) {
  const vantile::XdgFolders folders(home, [](const char* name) {
    const char* const value = ::getenv(name);
    return value ? std::optional<std::string>(value) : std::nullopt;
  });
  const auto shared = std::make_shared<vantile::XdgFolders>(folders);
  vantile::UtilityPorts::installed().folders = shared;
  auto& ports = vantile::WatcherPorts::installed();
  ports.folders = shared;
  ports.browsers = std::make_shared<vantile::LinuxBrowsers>(
      folders, [](const std::string& path) { return vantile::contentsOf(path); });
}

/// Serves the main loop until the standard input ends.
void serve() {
  auto& loop = vantile::RunLoop::main();
  char ignored[64];
  pollfd entries[] = {{loop.fd(), POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}};
  while (true) {
    if (::poll(entries, 2, -1) < 0) continue;  // a signal
    if (entries[0].revents) loop.dispatch();
    if (entries[1].revents && ::read(STDIN_FILENO, ignored, sizeof ignored) <= 0) return;
  }
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) {
    std::fputs("usage: download_watch HOME\n", stderr);
    return 2;
  }
  std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
  moveTo(arguments[1]);
  const auto watcher = vantile::sharedDownloadWatch().get(ToldWatch::make);
  const auto delegate = std::make_shared<vantile::DownloadWatchDelegate>();
  delegate->downloadFileCompleted = [](const std::optional<std::string>& path) {
    std::printf("completed\t%s\n", path ? path->c_str() : "(nil)");
  };
  watcher->setDelegate(delegate);
  std::int32_t stop = 0;
  watcher->startWatch(&stop);
  std::puts("watching");
  serve();
  watcher->stopWatch();
  return 0;
}
