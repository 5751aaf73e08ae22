#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <fts.h>
#include <ftw.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "vantile/platform/category_sizes.h"
#include "vantile/utility/folder_functions.h"

// Walks over a warm tree of 200,000 files in 2,220 folders: the library's traversals beside find
// and du, which have to start a process first, and beside nftw and fts, which need not. And the
// first pass of the accounting of space by kinds of files, beside du, on such a tree of which every
// other file is a photo; du has to ask every file, the accounting those that count.

namespace {

constexpr int filesInAFolder = 100;

/// A tree in a temporary folder, three levels deep; gone at the end.
class Tree {
 public:
  explicit Tree(const char* other) : other_(other) {
    std::string pattern =
        (std::filesystem::temp_directory_path() / "vantile-bench-XXXXXX").string();
    if (!::mkdtemp(pattern.data())) throw std::runtime_error("no temporary folder");
    root_ = pattern;
    for (int i = 0; i < 20; ++i)
      for (int j = 0; j < 10; ++j)
        for (int k = 0; k < 10; ++k) {
          const auto folder = root_ / ("group " + std::to_string(i)) /
                              ("library-" + std::to_string(j)) / ("part." + std::to_string(k));
          std::filesystem::create_directories(folder);
          for (int file = 0; file < filesInAFolder; ++file) makeFile(folder, file);
        }
  }
  ~Tree() {
    std::error_code error;
    std::filesystem::remove_all(root_, error);
  }
  Tree(const Tree&) = delete;
  Tree& operator=(const Tree&) = delete;

  const char* path() const { return root_.c_str(); }

 private:
  void makeFile(const std::filesystem::path& folder, int number) const {
    std::ofstream file(folder /
                       ("document " + std::to_string(number) + (number % 2 ? ".txt" : other_)));
    if (number % 10 == 0) file << std::string(1000, 'x');
    if (!file.flush()) throw std::runtime_error("the tree can't be made");
  }

  const char* const other_;  // extension of every other file
  std::filesystem::path root_;
};

const char* treePath = nullptr;
const char* photosPath = nullptr;
std::uint64_t counted = 0;

/// Processor time of the process and of its children that have ended, in seconds.
double processorTime() {
  double seconds = 0;
  for (const auto who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
    rusage usage = {};
    ::getrusage(who, &usage);
    for (const auto& time : {usage.ru_utime, usage.ru_stime})
      seconds += static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  }
  return seconds;
}

/// Reports the processor time of its scope as "processor": milliseconds an iteration.
class ProcessorTime {
 public:
  explicit ProcessorTime(benchmark::State& state) : state_(state) {}
  ~ProcessorTime() {
    state_.counters["processor"] =
        benchmark::Counter((processorTime() - begin_) * 1e3, benchmark::Counter::kAvgIterations);
  }
  ProcessorTime(const ProcessorTime&) = delete;
  ProcessorTime& operator=(const ProcessorTime&) = delete;

 private:
  benchmark::State& state_;
  const double begin_ = processorTime();
};

void reportApplications(benchmark::State& state) {
  const ProcessorTime processor(state);
  for (auto _ : state) {
    counted = 0;
    ::trv_all_app(
        treePath, 0, [](const char*, std::int32_t) { ++counted; }, nullptr);
    if (counted != 2220) state.SkipWithError("not every folder was reported");
  }
}

void folderSize(benchmark::State& state) {
  const ProcessorTime processor(state);
  for (auto _ : state)
    if (::get_folder_size(treePath) != 20000000) state.SkipWithError("a wrong size");
}

/// The time of a program from its start to its end, its output thrown away.
void program(benchmark::State& state, std::initializer_list<const char*> arguments) {
  std::vector<char*> pointers;
  for (const char* const argument : arguments)
    pointers.push_back(const_cast<char*>(argument ? argument : treePath));
  pointers.push_back(nullptr);
  posix_spawn_file_actions_t output;
  ::posix_spawn_file_actions_init(&output);
  ::posix_spawn_file_actions_addopen(&output, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  const ProcessorTime processor(state);
  for (auto _ : state) {
    pid_t child = 0;
    int status = -1;
    if (::posix_spawnp(&child, pointers[0], &output, nullptr, pointers.data(), ::environ) != 0 ||
        ::waitpid(child, &status, 0) != child || status != 0)
      state.SkipWithError("the program failed");
  }
  ::posix_spawn_file_actions_destroy(&output);
}

constexpr const char* tree = nullptr;  // stands for its path

void findStart(benchmark::State& state) {
  program(state, {"find", "/dev/null"});
}
void findFolders(benchmark::State& state) {
  program(state, {"find", tree, "-type", "d"});
}
void findAll(benchmark::State& state) {
  program(state, {"find", tree});
}
void du(benchmark::State& state) {
  program(state, {"du", "-s", "-b", tree});
}
void duOfPhotos(benchmark::State& state) {
  program(state, {"du", "-s", photosPath});
}

/// Waits for the accounting's own thread, lest its end be counted with what is measured next.
void waitUntilAlone() {
  const auto threads = [] {
    const std::filesystem::directory_iterator all("/proc/self/task");
    return std::distance(begin(all), end(all));
  };
  while (threads() > 1) std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

/// From nothing kept to figures that are there and kept, and all memory given back.
void firstAccounting(benchmark::State& state) {
  const ProcessorTime processor(state);
  const std::string mountPoint = photosPath;
  for (auto _ : state) {
    std::filesystem::remove_all(std::filesystem::path(::getenv("XDG_CACHE_HOME")) / "vantile");
    auto categories = vantile::makeVolumeCategories();
    categories->want({mountPoint});
    auto found = categories->of(mountPoint);
    for (; !found; found = categories->of(mountPoint))
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    if (found->sizes->at(12).uint64() == 0) state.SkipWithError("no photos were counted");
    categories.reset();
    waitUntilAlone();
  }
}

/// With every entry's path and kind; looks at no file where the listing tells the kind.
void ftsNames(benchmark::State& state) {
  const ProcessorTime processor(state);
  for (auto _ : state) {
    char* paths[] = {const_cast<char*>(treePath), nullptr};
    FTS* const walk = ::fts_open(paths, FTS_PHYSICAL | FTS_NOSTAT, nullptr);
    counted = 0;
    while (const FTSENT* const entry = ::fts_read(walk)) counted += entry->fts_info == FTS_D;
    ::fts_close(walk);
  }
}

void ftsSizes(benchmark::State& state) {
  const ProcessorTime processor(state);
  for (auto _ : state) {
    char* paths[] = {const_cast<char*>(treePath), nullptr};
    FTS* const walk = ::fts_open(paths, FTS_PHYSICAL, nullptr);
    counted = 0;
    while (const FTSENT* const entry = ::fts_read(walk))
      if (entry->fts_info == FTS_F)
        counted += static_cast<std::uint64_t>(entry->fts_statp->st_size);
    ::fts_close(walk);
  }
}

void nftwSizes(benchmark::State& state) {
  const ProcessorTime processor(state);
  for (auto _ : state) {
    counted = 0;
    ::nftw(
        treePath,
        [](const char*, const struct stat* status, int kind, FTW*) {
          if (kind == FTW_F) counted += static_cast<std::uint64_t>(status->st_size);
          return 0;
        },
        32, FTW_PHYS);
  }
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  const Tree made(".txt"), photos(".jpg");
  treePath = made.path();
  photosPath = photos.path();
  const auto caches = std::string(photosPath) + "-caches";
  ::setenv("XDG_CACHE_HOME", caches.c_str(), 1);
  const auto add = [](const char* name, void (*run)(benchmark::State&)) {
    benchmark::RegisterBenchmark(name, run)->UseRealTime()->Unit(benchmark::kMillisecond);
  };
  add("trv_all_app", reportApplications);
  add("find -type d", findFolders);
  add("find", findAll);
  add("find, no tree", findStart);
  add("fts, names", ftsNames);
  add("get_folder_size", folderSize);
  add("du -s -b", du);
  add("fts, sizes", ftsSizes);
  add("nftw, sizes", nftwSizes);
  add("first accounting", firstAccounting);
  add("du -s", duOfPhotos);
  benchmark::RunSpecifiedBenchmarks();
  std::filesystem::remove_all(caches);
}
