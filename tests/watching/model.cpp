// vantile_watch_model SECONDS [SEED]: random operations in a watched folder, and a list of it that
// is kept by what the queue tells, as a host would keep it. At every quiet moment the two must be
// the same. Ends with 1 at the first difference.

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <random>
#include <set>
#include <string>

#include "vantile/foundation/run_loop.h"
#include "vantile/watchqueue/watch_queue.h"

#include "fakes/temporary_folder.h"
#include "watching/real_folders.h"

namespace vantile::testing {
namespace {

namespace fs = std::filesystem;
using std::chrono::steady_clock;

constexpr std::uint32_t deleteAndRename = 33;

/// Changes the folder at random: files and folders that come, go, move in, out and about.
class Operations {
 public:
  Operations(std::string folder, std::string elsewhere, unsigned seed)
      : folder_(std::move(folder)), elsewhere_(std::move(elsewhere)), random_(seed) {}

  void one() {
    const auto some = path(folder_), other = path(folder_), outside = path(elsewhere_);
    switch (random_() % 10) {
      case 0:
      case 1:
      case 2:
        ::close(::open(some.c_str(), O_CREAT | O_WRONLY | O_APPEND | O_CLOEXEC, 0600));
        break;
      case 3:
        ::mkdir(some.c_str(), 0700);
        break;
      case 4:
        if (::unlink(some.c_str()) != 0) ::rmdir(some.c_str());
        break;
      case 5:
      case 6:
        ::rename(some.c_str(), other.c_str());
        break;
      case 7:
        ::rename(some.c_str(), outside.c_str());
        break;
      case 8:
        ::rename(outside.c_str(), some.c_str());
        break;
      default:
        // Held open while it loses its name.
        const int held = ::open(some.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
        ::unlink(some.c_str());
        if (held >= 0) ::close(held);
    }
  }

  unsigned number(unsigned below) { return static_cast<unsigned>(random_() % below); }

 private:
  std::string path(const std::string& folder) {
    static constexpr const char* ends[] = {"", ".part", "\n", "\xff"};
    return folder + "/" + std::to_string(random_() % 40) + ends[random_() % 4];
  }

  const std::string folder_, elsewhere_;
  std::mt19937 random_;
};

/// What is in the folder, as far as the queue has told.
class Model {
 public:
  Model(std::string folder, std::string sentinel)
      : folder_(std::move(folder)), sentinel_(std::move(sentinel)) {
    const auto delegate = std::make_shared<FSWatchQueueDelegate>();
    delegate->WatchQueueReceivedNotificationForPath = [this](FSWatchQueue&, const std::string&,
                                                             const std::string& path) {
      ++told;
      if (path == sentinel_)
        ++sentinels_;
      else if (path == folder_)
        scan();
      else
        forget(path);  // it was moved out
    };
    delegate->WatchQueueRenameForPath = [this](FSWatchQueue&, const std::string& to,
                                               const std::string& from) {
      ++told;
      forget(from);
      known.insert(to);
    };
    delegate->WatchQueueDeletedForPath = [this](FSWatchQueue&, const std::string& path) {
      ++told;
      forget(path);
    };
    queue->setDelegate(delegate);
    queue->addPathNotifyingAbout(folder_, 2);
    queue->addPathNotifyingAbout(sentinel_, 2);
  }

  /// Serves until everything that has happened was told, and what came of that: events come in
  /// order, and what is held back by one comes before the next but one. False when that takes too
  /// long.
  bool settle() {
    for (int round = 0; round < 3; ++round) {
      const auto before = sentinels_;
      const auto mark = sentinel_ + "/" + std::to_string(round);
      if (::rmdir(mark.c_str()) != 0) ::mkdir(mark.c_str(), 0700);
      if (!serveUntil([&] { return sentinels_ > before; })) return false;
    }
    return true;
  }

  std::set<std::string> known;
  std::uint64_t told = 0;
  std::shared_ptr<FSWatchQueue> queue = FSWatchQueue::init();

 private:
  void watch(const std::string& path) {
    known.insert(path);
    queue->addPathNotifyingAbout(path, deleteAndRename);
  }
  void scan() {
    for (const auto& entry : fs::directory_iterator(folder_)) watch(entry.path().string());
  }
  /// The item has gone from its path. Another may stand there by now.
  void forget(const std::string& path) {
    known.erase(path);
    queue->removePath(path);
    if (fs::exists(fs::symlink_status(path))) watch(path);
  }

  const std::string folder_, sentinel_;
  int sentinels_ = 0;
};

std::set<std::string> truth(const std::string& folder) {
  std::set<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder)) names.insert(entry.path().string());
  return names;
}

/// Serves what has come to the main loop.
void serve() {
  pollfd entry = {RunLoop::main().fd(), POLLIN, 0};
  while (::poll(&entry, 1, 0) == 1) RunLoop::main().dispatch();
}

void printDifference(const char* what, const std::set<std::string>& in,
                     const std::set<std::string>& notIn) {
  for (const auto& path : in)
    if (!notIn.contains(path)) std::printf("  %s %s\n", what, path.c_str());
}

int run(std::chrono::seconds duration, unsigned seed) {
  const TemporaryFolder disk;
  const auto folder = disk.folder("watched");
  Model model(folder, disk.folder("sentinel"));
  Operations operations(folder, disk.folder("elsewhere"), seed);
  std::uint64_t count = 0, quietMoments = 0;
  const auto end = steady_clock::now() + duration;
  while (steady_clock::now() < end) {
    for (auto left = operations.number(2000); left > 0; --left, ++count) {
      operations.one();
      if (operations.number(16) == 0) serve();
    }
    if (!model.settle()) {
      std::printf("seed %u: after %llu operations nothing is told any more\n", seed,
                  static_cast<unsigned long long>(count));
      return 1;
    }
    ++quietMoments;
    const auto is = truth(folder);
    if (model.known != is || model.queue->numberOfWatchedPaths() != is.size() + 2) {
      std::printf("seed %u: after %llu operations the list is wrong (%u watched, %zu there)\n",
                  seed, static_cast<unsigned long long>(count), model.queue->numberOfWatchedPaths(),
                  is.size());
      printDifference("missing:", is, model.known);
      printDifference("not there:", model.known, is);
      return 1;
    }
  }
  std::printf(
      "seed %u: %llu operations, %llu calls, the list was right at all %llu quiet moments\n", seed,
      static_cast<unsigned long long>(count), static_cast<unsigned long long>(model.told),
      static_cast<unsigned long long>(quietMoments));
  return 0;
}

}  // namespace
}  // namespace vantile::testing

int main(int count, char** arguments) {
  const auto number = [&](int place, unsigned otherwise) {
    return count > place ? static_cast<unsigned>(std::strtoul(arguments[place], nullptr, 10))
                         : otherwise;
  };
  return vantile::testing::run(std::chrono::seconds(number(1, 10)),
                               number(2, std::random_device()()));
}
