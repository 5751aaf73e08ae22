#pragma once

#include <dirent.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "vantile/platform/launched_applications.h"
#include "vantile/platform/linux/desktop_index.h"
#include "vantile/platform/linux/recent_stats.h"
#include "vantile/platform/linux/roots.h"
#include "vantile/platform/parsers/launch_evidence.h"
#include "vantile/platform/parsers/launched_processes.h"
#include "vantile/platform/parsers/pid_stat.h"
#include "vantile/platform/posix/descriptor.h"

namespace vantile {

/// The applications among the user's processes.
///
/// What is known of a process is kept by its number and its start. A look lists /proc and leaves
/// alone what it knows by the inode of its folder there: while a process lives, that is kept or
/// renewed, and a process that takes over its number gets another one. What a process may turn into
/// under the same start is found so:
/// - at its first looks it is looked at anew each time: it is forked before it becomes another
///   program, and begun before the session moves it into a unit;
/// - a leader of an application is checked at each look by its "stat": another start, another
///   program in memory, or that it ended and was not waited for;
/// - all others have their turn at every sixteenth look, by the link to their executable.
class LinuxLaunchedApplications final : public LaunchedApplications {
 public:
  /// Leaves the readings of applications' processes in `recent`.
  LinuxLaunchedApplications(const LinuxRoots& roots, std::string home,
                            DesktopIndex::Environment environment, RecentStats& recent);

  std::optional<std::vector<LaunchedApplication>> list() override;
  void rest() override;

 private:
  /// By what another program in the same process is seen.
  struct Image {
    std::string name;
    std::uint64_t codeStart = 0, stackStart = 0;
    friend bool operator==(const Image&, const Image&) = default;
  };
  struct Known {
    std::uint64_t inode = 0;
    bool isMine = false;  ///< the user's and alive
    std::int32_t parent = 0;
    std::uint64_t startTicks = 0;
    Image image;
    std::optional<ApplicationUnit> unit;
    std::optional<DesktopLaunch> launch;
    std::string executable;
    std::size_t unitEntry = LaunchedProcess::none;
    std::size_t launchEntry = LaunchedProcess::none;
    std::size_t programEntry = LaunchedProcess::none;
    bool isLeader = false;
    Descriptor file;           ///< a leader's "stat", which stands for this process alone
    unsigned looks = 0;        ///< how often it was looked at as a whole
    std::uint64_t listed = 0;  ///< the look that last saw it
  };
  using Table = std::map<std::int32_t, Known>;

  void takeListing(DIR* listing);
  void see(std::int32_t pid, const char* name, std::uint64_t inode);
  void lookAt(std::int32_t pid, const char* name, Known& known);
  void readEvidence(int folder, Known& known);
  void check(std::int32_t pid, const char* name, Known& known);
  std::optional<std::string_view> readStat(const char* name, Known& known);
  void renewParents();
  void resolve(std::int32_t pid, Known& known);
  std::vector<LaunchedProcess> candidates() const;

  const std::string proc_;
  RecentStats& recent_;
  std::mutex mutex_;  // over all below
  DesktopIndex index_;
  Table known_;
  std::size_t kept_ = 0;  ///< descriptors of leaders
  int folder_ = -1;       ///< /proc, while a look is taken
  std::uint64_t looks_ = 0;
  const std::unique_ptr<char[]> buffer_;  // no more of it takes memory than was ever written to
};

}  // namespace vantile
