#include "vantile/platform/linux/process_lister.h"

#include <unistd.h>

#include <array>
#include <utility>

#include "vantile/platform/linux/process_folder.h"
#include "vantile/platform/parsers/meminfo.h"

namespace vantile {
namespace {

constexpr std::size_t allOfMeminfo = 4096;
constexpr std::size_t lineLength = 48;
// A process that several hosts ask for in turn is kept over each other's runs.
constexpr std::uint64_t runsKept = 16;

std::uint64_t systemNumber(int name, std::uint64_t otherwise) {
  const long number = ::sysconf(name);
  return number > 0 ? static_cast<std::uint64_t>(number) : otherwise;
}

}  // namespace

LinuxProcessLister::LinuxProcessLister(const LinuxRoots& roots, Clock clock, RecentStats& recent)
    : proc_(roots.proc),
      clock_(std::move(clock)),
      recent_(recent),
      meminfo_(roots.proc + "/meminfo") {}

std::optional<ProcessListing> LinuxProcessLister::run(const std::string& pids, const std::string&) {
  const std::lock_guard lock(mutex_);
  ++runs_;
  const Descriptor proc = openProcessFolder(AT_FDCWD, proc_.c_str());
  if (!proc) return std::nullopt;
  const auto measures = units();
  const auto asked = parsePidList(pids);
  ProcessListing listing{1, std::string(processLineHeader)};
  listing.output.reserve((asked.size() + 1) * lineLength);
  for (const auto pid : asked)
    if (const auto reading = read(proc.get(), pid))
      appendProcessLine(listing.output, reading->stat, shareOf(*reading, measures), measures);
  forget(asked.size());
  return listing;
}

std::optional<RecentStats::Reading> LinuxProcessLister::read(int proc, std::int32_t pid) {
  const auto now = clock_();
  if (const auto recent = recent_.take(pid, now)) return recent;
  std::array<char, allOfPidStat> buffer;
  const auto text = readOnce(proc, (std::to_string(pid) + "/stat").c_str(), buffer);
  auto stat = text ? parsePidStat(*text) : std::nullopt;
  if (!stat || stat->pid != pid) return std::nullopt;
  stat->name = {};  // a view into the buffer
  return RecentStats::Reading{*stat, now};
}

Tenths LinuxProcessLister::shareOf(const RecentStats::Reading& reading, const ProcessUnits& units) {
  const PidStat& stat = reading.stat;
  const ProcessTimes now = {stat.startTicks, stat.userTicks + stat.systemTicks,
                            reading.nanoseconds};
  const auto [place, isNew] = seen_.try_emplace(stat.pid);
  Seen& seen = place->second;
  seen.run = runs_;
  if (isNew || seen.times.startTicks != now.startTicks) {
    seen.share = processorShareOfLife(now, units);
    seen.times = now;
  } else if (const auto share = processorShare(seen.times, now, units)) {
    seen.share = *share;
    seen.times = now;
  }
  return seen.share;
}

ProcessUnits LinuxProcessLister::units() {
  // The machine's memory hardly ever changes.
  if (memoryBytes_ == 0 || runs_ % runsKept == 0) {
    const auto text = meminfo_.beginning(allOfMeminfo);
    memoryBytes_ = text ? parseMeminfo(*text).memTotal.value_or(0) * 1024 : 0;
  }
  return {systemNumber(_SC_CLK_TCK, 100), systemNumber(_SC_PAGESIZE, 4096), memoryBytes_};
}

/// Lets go of processes that nobody has asked for in a while.
void LinuxProcessLister::forget(std::size_t asked) {
  if (seen_.size() <= asked) return;
  std::erase_if(seen_, [this](const auto& each) { return each.second.run + runsKept < runs_; });
}

std::shared_ptr<ProcessLister> systemProcessLister() {
  static auto& lister = *new std::shared_ptr<ProcessLister>(
      std::make_shared<LinuxProcessLister>(LinuxRoots(), sinceBoot, RecentStats::shared()));
  return lister;
}

}  // namespace vantile
