#include "vantile/platform/linux/category_sizes.h"

#include <linux/ioprio.h>
#include <poll.h>
#include <sched.h>
#include <stdlib.h>
#include <sys/eventfd.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <utility>

#include "vantile/foundation/guard.h"
#include "vantile/platform/linux/mailbox.h"
#include "vantile/platform/linux/standard_folders.h"
#include "vantile/platform/posix/descriptor.h"

namespace vantile {
namespace {

using Figures = std::map<VolumeKey, UsageSums>;

// Where each kind stands in the list, in the order of `UsageKind`.
constexpr std::array<std::size_t, usageKinds> places = {7, 6, 9, 12};
constexpr std::size_t listLength = 13;

CategorySizes sizesOf(const UsageSums& bytes) {
  Array list(listLength, Value(std::uint64_t{0}));
  for (std::size_t kind = 0; kind < usageKinds; ++kind) list[places[kind]] = Value(bytes[kind]);
  return {.sizes = std::move(list)};
}

/// Has the accounting count `list` in place of `before`. It knows volumes by mount point: one that
/// took another's place is a new one to it.
void replaceWanted(UsageAccounting& accounting, const std::vector<VolumeKey>& before,
                   const std::vector<VolumeKey>& list) {
  std::vector<std::string> kept, all;
  for (const auto& volume : list) {
    const auto isThere = [&](const VolumeKey& each) {
      return each.mountPoint == volume.mountPoint;
    };
    const auto known = std::find_if(before.begin(), before.end(), isThere);
    if (known != before.end() && *known == volume) kept.push_back(volume.mountPoint);
    all.push_back(volume.mountPoint);
  }
  if (kept.size() < all.size()) accounting.want(kept);
  accounting.want(all);
}

Figures figuresOf(const UsageAccounting& accounting, const std::vector<VolumeKey>& volumes) {
  const auto known = accounting.figures();
  Figures figures;
  for (const auto& volume : volumes)
    if (const auto found = known.find(volume.mountPoint); found != known.end())
      figures.emplace(volume, found->second);
  return figures;
}

/// The path without links, as the mount table has it; a missing folder's own.
std::string withoutLinks(std::string path) {
  const std::unique_ptr<char, decltype(&::free)> real(::realpath(path.c_str(), nullptr), &::free);
  return real ? std::string(real.get()) : std::move(path);
}

UsageAccounting::Means systemAccounting() {
  XdgFolders folders;
  UsageAccounting::Means means;
  means.cacheFolder = folders.caches() + "/vantile";
  for (const auto& folder :
       {std::string("/usr"), std::string("/opt"), std::string("/var/lib/flatpak"),
        folders.library() + "/flatpak", std::string("/var/lib/snapd"), std::string("/snap")})
    means.installed.push_back(withoutLinks(folder));
  return means;
}

/// The calling thread gets what nobody else wants. A kernel that refuses leaves it as it was.
void stepBehindOthers() {
  constexpr int thisThread = 0;
  const sched_param none = {};
  ::sched_setscheduler(thisThread, SCHED_IDLE, &none);
  ::syscall(SYS_ioprio_set, IOPRIO_WHO_PROCESS, thisThread,
            IOPRIO_PRIO_VALUE(IOPRIO_CLASS_IDLE, 0));
}

}  // namespace

/// What the owner and the thread share. The last of them ends it.
struct LinuxVolumeCategories::Shared {
  Shared() : wakeup(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

  void wake() const {
    const std::uint64_t one = 1;
    // Where it is full, it is readable.
    [[maybe_unused]] const auto written = ::write(wakeup.get(), &one, sizeof one);
  }
  void sleep(std::optional<std::chrono::nanoseconds> duration) const {
    using Milliseconds = std::chrono::milliseconds;
    constexpr Milliseconds longest = std::chrono::hours(1);
    int timeout = -1;
    if (duration)
      timeout =
          static_cast<int>(std::min(std::chrono::ceil<Milliseconds>(*duration), longest).count());
    pollfd waited = {wakeup.get(), POLLIN, 0};
    ::poll(&waited, 1, timeout);
    std::uint64_t count = 0;
    [[maybe_unused]] const auto read = ::read(wakeup.get(), &count, sizeof count);
  }

  void work(const std::function<UsageAccounting::Means()>& means) {
    UsageAccounting accounting(means());
    const std::function<bool()> isStopped = [this] { return isOver || !wanted.isEmpty(); };
    Figures told;
    std::vector<VolumeKey> counted;
    while (!isOver) {
      if (const auto list = wanted.take()) {
        replaceWanted(accounting, counted, *list);
        counted = *list;
      }
      const auto rest = accounting.turn(isStopped);
      if (auto present = figuresOf(accounting, counted); present != told) {
        told = present;
        figures.put(std::move(present));
      }
      if (!isOver && wanted.isEmpty() && rest != std::chrono::nanoseconds(0)) sleep(rest);
    }
    accounting.keep();
  }

  const Descriptor wakeup;
  std::atomic<bool> isOver = false;
  Mailbox<std::vector<VolumeKey>> wanted;
  Mailbox<Figures> figures;
};

LinuxVolumeCategories::LinuxVolumeCategories()
    : LinuxVolumeCategories(Means{.accounting = systemAccounting}) {}

LinuxVolumeCategories::LinuxVolumeCategories(Means means) : means_(std::move(means)) {}

LinuxVolumeCategories::~LinuxVolumeCategories() {
  want({});
}

std::optional<CategorySizes> LinuxVolumeCategories::of(const VolumeKey& volume) {
  if (!shared_ && !wanted_.empty()) start();  // where there was no thread to be had
  if (const auto latest = shared_ ? shared_->figures.take() : nullptr)
    figures_ = std::move(*latest);
  const bool isWanted = std::find(wanted_.begin(), wanted_.end(), volume) != wanted_.end();
  const auto found = figures_.find(volume);
  if (!isWanted || found == figures_.end()) return std::nullopt;
  return sizesOf(found->second);
}

void LinuxVolumeCategories::want(const std::vector<VolumeKey>& volumes) {
  // A list that says nothing new must not interrupt what is under way.
  if (volumes == wanted_ && (shared_ || volumes.empty())) return;
  wanted_ = volumes;
  std::erase_if(figures_, [this](const auto& each) {
    return std::find(wanted_.begin(), wanted_.end(), each.first) == wanted_.end();
  });
  if (volumes.empty() && shared_) {
    shared_->isOver = true;
    std::exchange(shared_, nullptr)->wake();
  } else if (shared_) {
    shared_->wanted.put(volumes);
    shared_->wake();
  } else if (!volumes.empty()) {
    start();
  }
}

void LinuxVolumeCategories::start() {
  // Those that are not needed any more may be held up by file systems that do not answer.
  constexpr int mostThreads = 4;
  static std::atomic<int> threads = 0;
  if (threads >= mostThreads) return;
  auto shared = std::make_shared<Shared>();
  shared->wanted.put(wanted_);
  if (!shared->wakeup) return;
  ++threads;
  const bool started = means_.threads->detach("vantile-usage", [shared, means = means_.accounting] {
    stepBehindOthers();
    guarded("usage by category", [&] { shared->work(means); });
    --threads;
  });
  if (!started) --threads;
  if (started) shared_ = std::move(shared);
}

std::unique_ptr<VolumeCategories> makeVolumeCategories() {
  return std::make_unique<LinuxVolumeCategories>();
}

}  // namespace vantile
