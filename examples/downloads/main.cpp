// Prints each download that a web browser finishes, for as many seconds as its argument says.

#include <vantile/foundation/run_loop.h>
#include <vantile/watchers/watch_download.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>

int main(int argc, char** argv) {
  const std::chrono::seconds time(argc > 1 ? std::atoi(argv[1]) : 600);
  if (time.count() <= 0) {
    std::fprintf(stderr, "usage: %s [SECONDS]\n", argv[0]);
    return 2;
  }
  auto& loop = vantile::RunLoop::main();

  const auto delegate = std::make_shared<vantile::DownloadWatchDelegate>();
  delegate->downloadFileCompleted = [](const std::optional<std::string>& path) {
    if (path) std::printf("downloaded %s\n", path->c_str());
    std::fflush(stdout);
  };
  const auto downloads = vantile::WatchDownload::singleton();
  downloads->setDelegate(delegate);

  std::int32_t stop = 0;  // lives as long as the watch
  downloads->startWatch(&stop);
  std::printf("watching for %lld seconds\n", static_cast<long long>(time.count()));
  std::fflush(stdout);
  const auto end = loop.after(time, [&loop] { loop.stop(); });
  loop.run();
  downloads->stopWatch();
}
