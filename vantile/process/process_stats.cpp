#include "vantile/process/process_stats.h"

#include <utility>

#include "vantile/process/process_ports.h"
#include "vantile/utility/strings.h"

namespace vantile {
namespace {

constexpr const char* linePattern =
    R"([\n^\n]*?\s*(\d+)\s+(\d+.\d+)\s+(\d+.\d+)\s+(\d+)\s+(\d+)\s+([a-zA-Z]+)\s*\n)";

// "cmd" is no column of macOS's tool, which prints the others and ends with a failure. The rule of
// the exit status, and the pattern, which has no group for that column, stand on this.
constexpr const char* columns = "pid,%cpu,%mem,cmd,rss,vsz,stat";

}  // namespace

std::shared_ptr<ProcessStats> ProcessStats::init() {
  std::shared_ptr<ProcessStats> monitor(new ProcessStats(ProcessPorts::installed()));
  monitor->setFreshInterval(2);
  return monitor;
}

ProcessStats::ProcessStats(ProcessPorts ports)
    : ports_(std::make_unique<const ProcessPorts>(std::move(ports))),
      _psRegex(ports_->patterns->compile(linePattern)) {}

ProcessStats::~ProcessStats() {
  guarded("the end of a process monitor", [this] { ports_->applications->rest(); });
}

std::shared_ptr<const TextPattern> ProcessStats::psRegex() const {
  const std::lock_guard lock(patternLock_);
  return _psRegex;
}

void ProcessStats::setPsRegex(std::shared_ptr<const TextPattern> pattern) {
  const std::lock_guard lock(patternLock_);
  _psRegex.swap(pattern);
}

void ProcessStats::updateInfo(const Timer*) {
  guarded("a process sample", [this] { sample(); });
}

void ProcessStats::sample() {
  std::unique_lock lock(sampleLock_);
  const auto pids = listApplications();
  if (!pids) {
    lock.unlock();
    return tell(delegate(), &ProcessStatsDelegate::updateProcessStaus, nullptr);
  }
  const auto listing = ports_->lister->run(*pids, columns);
  if (!listing) return logLine("a process sample: the process list can't be run");
  if (listing->exitStatus == 0) return;
  fill(*listing);
  const auto all = records();
  lock.unlock();
  tell(delegate(), &ProcessStatsDelegate::updateProcessStaus, &all);
}

/// Makes the records of the applications that run; gives their identifiers with commas between
/// them, or nothing when there are none.
std::optional<std::string> ProcessStats::listApplications() {
  processDicts.clear();
  auto applications = ports_->applications->list();
  if (!applications || applications->empty()) return std::nullopt;
  std::string pids;
  for (auto& each : *applications) {
    processDicts[each.pid] = ProcessInfo::initWithPidWithAppNameWithAppPath(
        each.pid, std::move(each.name), std::move(each.path));
    pids.append(std::to_string(each.pid)).push_back(',');
  }
  pids.pop_back();
  return pids;
}

void ProcessStats::fill(const ProcessListing& listing) {
  const auto pattern = psRegex();
  if (!pattern) return;
  pattern->matches(listing.output,
                   [this](const TextPattern::Groups& groups) { fillRecord(groups); });
}

void ProcessStats::fillRecord(const TextPattern::Groups& groups) {
  // A pattern of the host's may have other groups.
  const auto text = [&groups](std::size_t group) {
    return group < groups.size() ? groups[group].value_or("") : std::string_view();
  };
  const auto found = processDicts.find(intValue(text(1)));
  if (found == processDicts.end()) return;
  ProcessInfo& info = *found->second;
  info.setCpu(doubleValue(text(2)));
  info.setMemory(doubleValue(text(3)));
  info.setPhyMemoryPages(intValue(text(4)));
  info.setVirtMemoryPages(intValue(text(5)));
  info.setStats(std::string(text(6)));
}

ProcessStats::Records ProcessStats::records() const {
  Records all;
  all.reserve(processDicts.size());
  for (const auto& [pid, info] : processDicts) all.push_back(info);
  return all;
}

}  // namespace vantile
