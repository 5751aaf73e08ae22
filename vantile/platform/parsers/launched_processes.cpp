#include "vantile/platform/parsers/launched_processes.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>

namespace vantile {
namespace {

constexpr std::size_t none = LaunchedProcess::none;

class Leaders {
 public:
  explicit Leaders(const std::vector<LaunchedProcess>& processes) : processes_(processes) {
    for (std::size_t at = 0; at < processes.size(); ++at) {
      const auto& process = processes[at];
      if (!process.group || process.unitEntry == none) continue;
      const auto [known, isNew] = firstOfUnit_.try_emplace(*process.group, at);
      if (!isNew && process.startTicks < processes[known->second].startTicks) known->second = at;
    }
  }

  /// The entry of the application that the process leads, or none.
  std::size_t ledBy(std::size_t at) const {
    const auto& process = processes_[at];
    if (leadsUnit(at)) return process.unitEntry;
    const auto entry = ownEntry(process);
    if (entry == none || entry == process.unitEntry) return none;
    if (process.launchEntry != none) return entry;
    return isBegunBySame(process) ? none : entry;
  }

 private:
  static std::size_t ownEntry(const LaunchedProcess& process) {
    return process.launchEntry != none ? process.launchEntry : process.programEntry;
  }

  bool leadsUnit(std::size_t at) const {
    const auto& process = processes_[at];
    if (!process.group || process.unitEntry == none) return false;
    return firstOfUnit_.at(*process.group) == at;
  }

  /// The entry of the application that the process belongs to, leader or not.
  std::size_t entryOf(std::size_t at) const {
    const auto own = ownEntry(processes_[at]);
    return leadsUnit(at) || own == none ? processes_[at].unitEntry : own;
  }

  bool isBegunBySame(const LaunchedProcess& process) const {
    const auto found = std::lower_bound(
        processes_.begin(), processes_.end(), process.parent,
        [](const LaunchedProcess& each, std::int32_t pid) { return each.pid < pid; });
    if (found == processes_.end() || found->pid != process.parent) return false;
    const auto entry = entryOf(static_cast<std::size_t>(found - processes_.begin()));
    if (entry == none) return false;
    const bool sameProgram =
        found->executable && process.executable && *found->executable == *process.executable;
    return entry == process.programEntry || sameProgram;
  }

  const std::vector<LaunchedProcess>& processes_;
  std::unordered_map<std::string_view, std::size_t> firstOfUnit_;
};

}  // namespace

std::vector<ApplicationLeader> applicationLeaders(const std::vector<LaunchedProcess>& processes) {
  const Leaders leaders(processes);
  std::vector<ApplicationLeader> found;
  for (std::size_t at = 0; at < processes.size(); ++at) {
    const auto entry = leaders.ledBy(at);
    if (entry != none) found.push_back({at, entry});
  }
  return found;
}

}  // namespace vantile
