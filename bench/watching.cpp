#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/inotify.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "vantile/foundation/log.h"
#include "vantile/foundation/run_loop.h"
#include "vantile/utility/folder_functions.h"
#include "vantile/watchqueue/watch_queue.h"

// What watching costs, beside a bare reader of inotify and beside fswatch:
//
//   watching            everything; ends with 1 where the latency aimed at is missed
//   watching latency | events | paths | rescan

extern char** environ;

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using vantile::FSWatchQueue;
using vantile::FSWatchQueueDelegate;
using vantile::RunLoop;

double microseconds(Clock::duration time) {
  return std::chrono::duration<double, std::micro>(time).count();
}

/// A folder for one measurement.
class Scratch {
 public:
  Scratch() {
    std::string name = (fs::temp_directory_path() / "vantile-bench-XXXXXX").string();
    if (!::mkdtemp(name.data())) std::abort();
    path = name;
  }
  ~Scratch() { fs::remove_all(path); }
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;

  std::string file(long number, const char* ending = "") const {
    auto name = path + "/" + std::to_string(number) + ending;
    ::close(::open(name.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600));
    return name;
  }

  std::string path;
};

/// Serves the main loop until `done`.
void serveUntil(const std::function<bool()>& done) {
  pollfd entry = {RunLoop::main().fd(), POLLIN, 0};
  while (!done())
    if (::poll(&entry, 1, 10000) == 1) RunLoop::main().dispatch();
}

std::shared_ptr<FSWatchQueue> queueTelling(std::function<void(const std::string&)> tell) {
  auto queue = FSWatchQueue::init();
  auto delegate = std::make_shared<FSWatchQueueDelegate>();
  delegate->WatchQueueReceivedNotificationForPath = [tell = std::move(tell)](
                                                        FSWatchQueue&, const std::string&,
                                                        const std::string& path) { tell(path); };
  queue->setDelegate(delegate);
  return queue;
}

/// From a write to the delegate's call, with the main loop idle.
bool measureLatency() {
  const Scratch disk;
  const auto path = disk.file(0);
  Clock::time_point written, told;
  bool came = false;
  const auto queue = queueTelling([&](const std::string&) {
    told = Clock::now();
    came = true;
  });
  queue->addPathNotifyingAbout(path, 2);
  const int file = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
  std::vector<double> times;
  for (int round = 0; round < 2200; ++round) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));  // both threads are asleep by then
    came = false;
    written = Clock::now();
    if (::pwrite(file, "x", 1, 0) != 1) std::abort();
    serveUntil([&] { return came; });
    if (round >= 200) times.push_back(microseconds(told - written));
  }
  ::close(file);
  std::sort(times.begin(), times.end());
  const auto part = [&times](double share) {
    return times[static_cast<std::size_t>(share * static_cast<double>(times.size() - 1))];
  };
  std::printf("from a write to the delegate's call: p50 %.0f us, p90 %.0f, p99 %.0f\n", part(0.5),
              part(0.9), part(0.99));
  return part(0.5) <= 150;
}

constexpr long eventCount = 400000;

/// Writes to files in turn, as fast as it can: each write is an event.
void writeTo(const std::vector<int>& files) {
  for (long number = 0; number < eventCount; ++number)
    if (::pwrite(files[static_cast<std::size_t>(number) % files.size()], "x", 1, 0) != 1)
      std::abort();
}

struct Files {
  explicit Files(const Scratch& disk) {
    for (long number = 0; number < 1000; ++number) {
      paths.push_back(disk.file(number));
      descriptors.push_back(::open(paths.back().c_str(), O_WRONLY | O_CLOEXEC));
    }
  }
  ~Files() {
    for (const int descriptor : descriptors) ::close(descriptor);
  }
  Files(const Files&) = delete;
  Files& operator=(const Files&) = delete;

  std::vector<std::string> paths;
  std::vector<int> descriptors;
};

void printRate(const char* who, Clock::duration time, long told, bool lost) {
  std::printf("%-22s %6.0f thousand events/s, %7ld told%s\n", who,
              static_cast<double>(eventCount) / microseconds(time) * 1000, told,
              lost ? ", SOME LOST" : "");
}

void measureQueue() {
  const Scratch disk;
  const Files files(disk);
  std::atomic<bool> lost = false;
  vantile::setLogSink([&lost](std::string_view) { lost = true; });
  const auto last = disk.file(-1);
  long told = 0;
  bool ended = false;
  const auto queue = queueTelling([&](const std::string& path) {
    ++told;
    if (path == last) ended = true;
  });
  for (const auto& path : files.paths) queue->addPathNotifyingAbout(path, 2);
  queue->addPathNotifyingAbout(last, 2);
  const auto begin = Clock::now();
  std::thread writer([&] {
    writeTo(files.descriptors);
    std::ofstream(last) << "x";
  });
  serveUntil([&] { return ended; });
  const auto time = Clock::now() - begin;
  writer.join();
  vantile::setLogSink({});
  printRate("a watch queue", time, told, lost);
}

void measureBareReader() {
  const Scratch disk;
  const Files files(disk);
  const int instance = ::inotify_init1(IN_CLOEXEC);
  for (const auto& path : files.paths) ::inotify_add_watch(instance, path.c_str(), IN_MODIFY);
  const auto last = disk.file(-1);
  const int lastWatch = ::inotify_add_watch(instance, last.c_str(), IN_MODIFY);
  const auto begin = Clock::now();
  std::thread writer([&] {
    writeTo(files.descriptors);
    std::ofstream(last) << "x";
  });
  std::vector<char> buffer(65536);
  long told = 0;
  bool ended = false, lost = false;
  while (!ended) {
    const auto size = ::read(instance, buffer.data(), buffer.size());
    for (ssize_t next = 0; next < size; next += static_cast<ssize_t>(sizeof(inotify_event))) {
      const auto* const event = reinterpret_cast<const inotify_event*>(buffer.data() + next);
      ++told;
      lost |= (event->mask & IN_Q_OVERFLOW) != 0;
      ended |= event->wd == lastWatch || lost;
    }
  }
  const auto time = Clock::now() - begin;
  writer.join();
  ::close(instance);
  printRate("a bare inotify reader", time, told, lost);
}

void measureFswatch() {
  const Scratch disk;
  const Files files(disk);
  const auto last = disk.file(-1);
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) std::abort();
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_adddup2(&actions, ends[1], 1);
  std::string folder = disk.path;
  const char* const arguments[] = {"fswatch", "-l",           "0.1",  "--event",
                                   "Updated", folder.c_str(), nullptr};
  pid_t child = 0;
  const bool started = ::posix_spawnp(&child, "fswatch", &actions, nullptr,
                                      const_cast<char* const*>(arguments), environ) == 0;
  ::posix_spawn_file_actions_destroy(&actions);
  ::close(ends[1]);
  if (!started) {
    std::printf("fswatch is not installed\n");
    ::close(ends[0]);
    return;
  }
  std::this_thread::sleep_for(std::chrono::seconds(2));  // it says nothing when it is ready
  FILE* const output = ::fdopen(ends[0], "r");
  const auto begin = Clock::now();
  std::thread writer([&] {
    writeTo(files.descriptors);
    std::ofstream(last) << "x";
  });
  std::vector<char> line(4096);
  long told = 0;
  bool ended = false;
  pollfd waiting = {ends[0], POLLIN, 0};
  while (!ended && ::poll(&waiting, 1, 30000) == 1 &&
         std::fgets(line.data(), static_cast<int>(line.size()), output)) {
    ++told;
    ended = std::string(line.data()) == last + "\n";
  }
  const auto time = Clock::now() - begin;
  writer.join();
  ::kill(child, SIGTERM);
  ::waitpid(child, nullptr, 0);
  std::fclose(output);
  printRate("fswatch", time, told, !ended);
}

std::size_t heapAndMore() {
  std::size_t size = 0, resident = 0;
  std::ifstream("/proc/self/statm") >> size >> resident;
  return resident * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}

void measurePaths() {
  constexpr long count = 50000;
  const Scratch disk;
  std::vector<std::string> paths;
  for (long number = 0; number < count; ++number) paths.push_back(disk.file(number, ".part"));
  const auto before = heapAndMore();
  auto queue = FSWatchQueue::init();
  auto begin = Clock::now();
  for (const auto& path : paths) queue->addPathNotifyingAbout(path, 33);
  const auto added = Clock::now() - begin;
  const auto bytes = heapAndMore() - before;
  const auto watched = queue->numberOfWatchedPaths();
  begin = Clock::now();
  queue->removeAllPaths();
  const auto removed = Clock::now() - begin;
  const int instance = ::inotify_init1(IN_CLOEXEC);
  begin = Clock::now();
  for (const auto& path : paths)
    ::inotify_add_watch(instance, path.c_str(), IN_DELETE_SELF | IN_MOVE_SELF | IN_ATTRIB);
  const auto bare = Clock::now() - begin;
  ::close(instance);
  std::printf("%u paths: %.1f us a path to watch (%.1f bare), %.1f to end, %zu bytes a path\n",
              watched, microseconds(added) / count, microseconds(bare) / count,
              microseconds(removed) / count, bytes / count);
}

void measureRescan() {
  const Scratch disk;
  for (long number = 0; number < 10000; ++number)
    disk.file(number, number % 100 == 0 ? ".crdownload" : ".pdf");
  const auto median = [](const std::function<void()>& work) {
    std::vector<double> times;
    for (int round = 0; round < 51; ++round) {
      const auto begin = Clock::now();
      work();
      times.push_back(microseconds(Clock::now() - begin));
    }
    std::nth_element(times.begin(), times.begin() + 25, times.end());
    return times[25];
  };
  const auto scan = median([&] {
    trv_sub_download(
        disk.path.c_str(), [](const char*) {}, nullptr);
  });
  const auto bare = median([&] {
    DIR* const folder = ::opendir(disk.path.c_str());
    while (::readdir(folder)) {
    }
    ::closedir(folder);
  });
  std::printf("a folder of 10000 items: %.0f us for a rescan, %.0f for readdir alone\n", scan,
              bare);
}

}  // namespace

int main(int count, char** arguments) {
  const std::string what = count > 1 ? arguments[1] : "";
  const auto wanted = [&what](const char* name) { return what.empty() || what == name; };
  RunLoop::main().fd();
  bool met = true;
  if (wanted("latency")) met = measureLatency();
  if (wanted("events")) {
    measureBareReader();
    measureQueue();
    measureFswatch();
  }
  if (wanted("paths")) measurePaths();
  if (wanted("rescan")) measureRescan();
  return met ? 0 : 1;
}
