#include <benchmark/benchmark.h>
#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "vantile/process/process_stats.h"

// One sample of a hundred running applications, finding them included: the library's, beside the
// reads that it can't do without, and beside one run of ps(1) over the same processes.

namespace {

constexpr int applications = 100;

/// A hundred programs with a desktop entry each, as long as it lives.
class Desktop {
 public:
  Desktop() {
    std::string path = (std::filesystem::temp_directory_path() / "vantile-bench-XXXXXX").string();
    if (!::mkdtemp(path.data())) return;
    folder_ = path;
    ::setenv("XDG_DATA_HOME", folder_.c_str(), 1);
    std::filesystem::create_directories(folder_ + "/applications");
    for (int number = 0; number < applications; ++number) start("app" + std::to_string(number));
    // A folder that was just changed is read again each time.
    std::this_thread::sleep_for(std::chrono::seconds(4));
  }
  ~Desktop() {
    for (const auto pid : pids_) {
      ::kill(pid, SIGKILL);
      ::waitpid(pid, nullptr, 0);
    }
    std::error_code ignored;
    if (!folder_.empty()) std::filesystem::remove_all(folder_, ignored);
  }
  Desktop(const Desktop&) = delete;
  Desktop& operator=(const Desktop&) = delete;

  const std::vector<pid_t>& pids() const { return pids_; }

 private:
  void start(const std::string& name) {
    const auto program = folder_ + "/" + name;
    std::filesystem::copy_file("/bin/sleep", program);
    std::ofstream(folder_ + "/applications/" + name + ".desktop")
        << "[Desktop Entry]\nType=Application\nName=" << name << "\nExec=" << program << "\n";
    std::string argument = "3600";
    char* const argv[] = {const_cast<char*>(program.c_str()), argument.data(), nullptr};
    pid_t pid = 0;
    if (::posix_spawn(&pid, program.c_str(), nullptr, nullptr, argv, environ) == 0)
      pids_.push_back(pid);
  }

  std::string folder_;
  std::vector<pid_t> pids_;
};

std::unique_ptr<Desktop> desktop;

void processTick(benchmark::State& state) {
  std::size_t seen = 0, filled = 0;
  const auto monitor = vantile::ProcessStats::init();
  const auto delegate = std::make_shared<vantile::ProcessStatsDelegate>();
  delegate->updateProcessStaus = [&](const auto* processes) {
    seen = filled = 0;
    if (!processes) return;
    seen = processes->size();
    for (const auto& each : *processes) filled += each->stats().has_value();
  };
  monitor->setFreshInterval(0);
  monitor->setDelegate(delegate);
  // Past the first looks at each process.
  for (int look = 0; look < 20; ++look) monitor->updateInfo();
  for (auto _ : state) monitor->updateInfo();
  monitor->setDelegate(nullptr);
  if (seen < applications || filled < applications)
    state.SkipWithError("not all applications were found");
}

/// The listing of /proc and the "stat" of each application.
void bareReads(benchmark::State& state) {
  char buffer[2048];
  std::vector<std::string> files;
  for (const auto pid : desktop->pids()) files.push_back("/proc/" + std::to_string(pid) + "/stat");
  for (auto _ : state) {
    DIR* const listing = ::opendir("/proc");
    while (const dirent* const entry = ::readdir(listing)) benchmark::DoNotOptimize(entry->d_ino);
    ::closedir(listing);
    for (const auto& file : files) {
      const int descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
      benchmark::DoNotOptimize(::read(descriptor, buffer, sizeof buffer));
      ::close(descriptor);
    }
  }
}

double processorSeconds(int whose) {
  rusage used = {};
  ::getrusage(whose, &used);
  return static_cast<double>(used.ru_utime.tv_sec + used.ru_stime.tv_sec) +
         static_cast<double>(used.ru_utime.tv_usec + used.ru_stime.tv_usec) / 1e6;
}

/// Its processor time is a child's, too, which the benchmark does not count: see "processor".
void oneRunOfPs(benchmark::State& state) {
  std::string command = "exec ps -p ";
  for (const auto pid : desktop->pids()) command += std::to_string(pid) + ",";
  command.back() = ' ';
  command += "-o pid,%cpu,%mem,rss,vsz,stat";
  const auto seconds = [] {
    return processorSeconds(RUSAGE_SELF) + processorSeconds(RUSAGE_CHILDREN);
  };
  const double before = seconds();
  for (auto _ : state) {
    FILE* const output = ::popen(command.c_str(), "r");
    char piece[4096];
    while (output && std::fread(piece, 1, sizeof piece, output) > 0) {
    }
    if (!output || ::pclose(output) != 0) return state.SkipWithError("ps does not run");
  }
  state.counters["processor"] = benchmark::Counter(
      (seconds() - before) * 1000 / static_cast<double>(state.iterations()));  // milliseconds
}

BENCHMARK(processTick)->Name("process tick");
BENCHMARK(bareReads)->Name("bare reads of processes");
BENCHMARK(oneRunOfPs)->Name("one run of ps")->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
  desktop = std::make_unique<Desktop>();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  desktop.reset();
}
