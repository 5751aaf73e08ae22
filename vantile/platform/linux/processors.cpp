#include "vantile/platform/linux/processors.h"

#include <sys/stat.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <string_view>

#include "vantile/platform/linux/folder_entries.h"
#include "vantile/platform/parsers/cpuinfo.h"
#include "vantile/platform/parsers/loadavg.h"
#include "vantile/platform/parsers/text.h"
#include "vantile/platform/posix/files.h"
#include "vantile/platform/posix/load_averages.h"

namespace vantile {
namespace {

constexpr std::size_t firstPartOfStat = 4096;  // some forty processors
constexpr std::size_t allOfLoadavg = 128;
constexpr std::size_t allOfAttribute = 64;

// The folders of /proc beside the processes' change when a module is loaded.
constexpr unsigned readingsBetweenListings = 256;

bool isProcess(std::string_view name) {
  return std::all_of(name.begin(), name.end(),
                     [](char each) { return each >= '0' && each <= '9'; });
}

bool isFolder(const std::string& parent, const dirent& entry) {
  if (entry.d_type != DT_UNKNOWN) return entry.d_type == DT_DIR;
  struct stat status = {};
  return ::lstat((parent + "/" + entry.d_name).c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

std::optional<std::uint64_t> linksOf(const std::string& folder) {
  struct stat status = {};
  if (::stat(folder.c_str(), &status) != 0) return std::nullopt;
  return status.st_nlink;
}

std::int32_t clamped(std::uint64_t count) {
  constexpr std::uint64_t largest = std::numeric_limits<std::int32_t>::max();
  return static_cast<std::int32_t>(std::min(count, largest));
}

}  // namespace

LinuxProcessors::LinuxProcessors(const LinuxRoots& roots)
    : proc_(roots.proc),
      cpufreq_(roots.sys + "/devices/system/cpu/cpu0/cpufreq/"),
      stat_(roots.proc + "/stat"),
      loadavg_(roots.proc + "/loadavg"),
      statPart_(firstPartOfStat) {}

std::optional<ProcStat> LinuxProcessors::stat() {
  // The kernel puts the file together as a whole and the processors stand first, so one read has
  // them all and of one moment. The rest, a counter for every interrupt, may stay where it is.
  while (true) {
    const auto text = stat_.beginning(statPart_);
    if (!text) return std::nullopt;
    auto stat = parseProcStat(*text);
    const bool isAll = stat.complete || text->size() < statPart_ || statPart_ >= KeptFile::longest;
    if (isAll) return stat.processors.empty() ? std::nullopt : std::optional(std::move(stat));
    statPart_ *= 2;
  }
}

std::optional<std::vector<ProcessorTicks>> LinuxProcessors::ticks() {
  const std::lock_guard lock(mutex_);
  const auto reading = stat();
  return reading ? std::optional(counters_.advance(*reading)) : std::nullopt;
}

/// Counts the processes that are seen, and finds out whether the links can be counted instead.
std::uint64_t LinuxProcessors::listProcesses() {
  std::uint64_t listed = 0;
  otherLinks_ = 2;  // its own name and "."
  forEachEntry(proc_, [this, &listed](const dirent& entry) {
    const std::string_view name = entry.d_name;
    if (name == "." || name == "..") return;
    if (isProcess(name)) {
      ++listed;
    } else if (isFolder(proc_, entry)) {
      ++otherLinks_;
    }
  });
  // Some file systems keep no such count. Processes come and go meanwhile, but not half of them.
  const auto links = linksOf(proc_).value_or(0);
  linksAreCounted_ = links > otherLinks_ && links - otherLinks_ >= listed / 2;
  return listed;
}

std::optional<std::uint64_t> LinuxProcessors::processes() {
  const bool listing = readings_++ % readingsBetweenListings == 0 || !linksAreCounted_;
  const auto listed = listing ? listProcesses() : 0;
  if (!linksAreCounted_) return listed > 0 ? std::optional(listed) : std::nullopt;
  const auto links = linksOf(proc_);
  return links && *links > otherLinks_ ? std::optional(*links - otherLinks_) : std::nullopt;
}

std::optional<TaskCounts> LinuxProcessors::tasks() {
  const std::lock_guard lock(mutex_);
  const auto text = loadavg_.beginning(allOfLoadavg);
  const auto threads = text ? threadsInLoadavg(*text) : std::nullopt;
  const auto tasks = processes();
  if (!tasks || !threads) return std::nullopt;
  return TaskCounts{clamped(*tasks), clamped(*threads)};
}

std::vector<double> LinuxProcessors::loadAverages() {
  return givenLoadAverages();
}

std::optional<std::uint64_t> LinuxProcessors::kilohertz(const char* file) {
  const auto text = contentsOf(cpufreq_ + file, allOfAttribute);
  const auto number = text ? leadingNumber(*text) : std::nullopt;
  const bool usable =
      number && *number > 0 && *number <= std::numeric_limits<std::uint64_t>::max() / 1000;
  return usable ? number : std::nullopt;
}

std::optional<std::uint64_t> LinuxProcessors::frequency() {
  auto rate = kilohertz("base_frequency");
  if (!rate) rate = kilohertz("cpuinfo_max_freq");
  if (rate) return *rate * 1000;
  const auto text = contentsOf(proc_ + "/cpuinfo");
  return text ? parseCpuinfo(*text).nominalRate : std::nullopt;
}

std::optional<std::uint32_t> LinuxProcessors::count() {
  const std::lock_guard lock(mutex_);
  const auto reading = stat();
  if (!reading) return std::nullopt;
  return static_cast<std::uint32_t>(reading->processors.size());
}

std::shared_ptr<Processors> systemProcessors() {
  static auto& processors = *new std::shared_ptr<Processors>(std::make_shared<LinuxProcessors>());
  return processors;
}

}  // namespace vantile
