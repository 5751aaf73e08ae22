#include "vantile/platform/linux/category_sizes.h"

#include <fcntl.h>
#include <linux/ioprio.h>
#include <sched.h>
#include <stdlib.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <exception>
#include <utility>

#include "vantile/foundation/guard.h"
#include "vantile/platform/linux/kind_desk.h"
#include "vantile/platform/linux/mailbox.h"
#include "vantile/platform/linux/wakeup.h"
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
                   const std::vector<VolumeKey>& list,
                   const UsageAccounting::IsStopped& isStopped) {
  std::vector<std::string> kept, all;
  for (const auto& volume : list) {
    const auto isThere = [&](const VolumeKey& each) {
      return each.mountPoint == volume.mountPoint;
    };
    const auto known = std::find_if(before.begin(), before.end(), isThere);
    if (known == before.end() || *known == volume) kept.push_back(volume.mountPoint);
    all.push_back(volume.mountPoint);
  }
  if (kept.size() < all.size()) accounting.want(kept, isStopped);
  accounting.want(all, isStopped);
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

/// The calling thread gets what nobody else wants. A kernel that refuses leaves it as it was.
void stepBehindOthers() {
  constexpr int thisThread = 0;
  const sched_param none = {};
  ::sched_setscheduler(thisThread, SCHED_IDLE, &none);
  ::syscall(SYS_ioprio_set, IOPRIO_WHO_PROCESS, thisThread,
            IOPRIO_PRIO_VALUE(IOPRIO_CLASS_IDLE, 0));
}

}  // namespace

UsageAccounting::Means systemAccounting(bool mayHang, XdgFolders folders, const LinuxRoots& roots,
                                        const std::string& top) {
  UsageAccounting::Means means;
  means.cacheFolder = folders.caches() + "/vantile";
  for (const auto* const folder : {"/usr", "/opt", "/var/lib/flatpak", "/var/lib/snapd", "/snap"})
    means.installed.push_back(withoutLinks(top + folder));
  means.installed.push_back(withoutLinks(folders.library() + "/flatpak"));
  const auto volumes = std::make_shared<UsageVolumes>(roots);
  means.othersOf = [volumes](const std::string& mountPoint) {
    return volumes->othersOf(mountPoint);
  };
  means.volumeAt = [mayHang, volumes](const std::string& mountPoint) -> std::optional<UsageVolume> {
    // One that took another's place a moment ago may be of the other sort.
    if (volumes->mayHang(mountPoint) != mayHang) return std::nullopt;
    return volumes->at(mountPoint);
  };
  return means;
}

/// What the owner and the threads share. The last of them ends it.
struct LinuxVolumeCategories::Shared {
  /// Counts until it is over, whatever fails.
  void work(const std::function<UsageAccounting::Means()>& means, std::chrono::nanoseconds retry) {
    std::vector<VolumeKey> list;
    bool hasFailed = false;
    const auto failed = [&hasFailed](std::string_view error) {
      if (!std::exchange(hasFailed, true)) logEscaped("usage by category", error);
    };
    while (!isOver) {
      try {
        count(means(), list);
      } catch (const std::exception& error) {
        failed(error.what());
      } catch (...) {
        failed("something that is not a std::exception");
      }
      if (!isOver) wakeup.sleep(retry);
    }
  }

  void count(UsageAccounting::Means means, std::vector<VolumeKey>& list) {
    const std::function<bool()> isStopped = [this] { return isOver || !wanted.isEmpty(); };
    means.kindOf = [this](const std::string& name) { return desk.of(name); };
    UsageAccounting accounting(std::move(means));
    replaceWanted(accounting, {}, list, isStopped);
    Figures told;
    while (!isOver) {
      if (const auto latest = wanted.take()) {
        replaceWanted(accounting, list, *latest, [this] { return isOver.load(); });
        list = *latest;
      }
      const auto rest = accounting.turn(isStopped);
      if (auto present = figuresOf(accounting, list); present != told) {
        told = present;
        figures.put(std::move(present));
      }
      const bool isToGoOn = isOver || !wanted.isEmpty();
      if (wakeup.sleep(isToGoOn ? std::chrono::nanoseconds(0) : rest, mounts.get()))
        accounting.lookAgain();
    }
    accounting.keepSmall();
  }

  const Wakeup wakeup;
  const Descriptor mounts{
      ::open((LinuxRoots{}.proc + "/self/mountinfo").c_str(), O_RDONLY | O_CLOEXEC)};
  KindDesk desk;
  std::atomic<bool> isOver = false;
  Mailbox<std::vector<VolumeKey>> wanted;
  Mailbox<Figures> figures;
};

LinuxVolumeCategories::LinuxVolumeCategories()
    : LinuxVolumeCategories(
          Means{.accounting = [](bool mayHang) { return systemAccounting(mayHang); },
                .mayHang = [volumes = std::make_shared<UsageVolumes>()](
                               const std::string& at) { return volumes->mayHang(at); }}) {}

LinuxVolumeCategories::LinuxVolumeCategories(Means means) : means_(std::move(means)) {}

LinuxVolumeCategories::~LinuxVolumeCategories() {
  want({});
}

std::optional<CategorySizes> LinuxVolumeCategories::of(const VolumeKey& volume) {
  for (Part& part : parts_) {
    if (!part.shared && !part.wanted.empty()) start(part);  // where there was no thread to be had
    if (const auto latest = part.shared ? part.shared->figures.take() : nullptr)
      part.figures = std::move(*latest);
    const bool isWanted =
        std::find(part.wanted.begin(), part.wanted.end(), volume) != part.wanted.end();
    const auto found = part.figures.find(volume);
    if (isWanted && found != part.figures.end()) return sizesOf(found->second);
  }
  return std::nullopt;
}

void LinuxVolumeCategories::want(const std::vector<VolumeKey>& volumes) {
  for (Part& part : parts_) {
    std::vector<VolumeKey> chosen;
    for (const auto& volume : volumes)
      if ((means_.mayHang && means_.mayHang(volume.mountPoint)) == part.mayHang)
        chosen.push_back(volume);
    want(part, chosen);
  }
}

void LinuxVolumeCategories::want(Part& part, const std::vector<VolumeKey>& volumes) {
  // A list that says nothing new must not interrupt what is under way.
  if (volumes == part.wanted && (part.shared || volumes.empty())) return;
  part.wanted = volumes;
  std::erase_if(part.figures, [&part](const auto& each) {
    return std::find(part.wanted.begin(), part.wanted.end(), each.first) == part.wanted.end();
  });
  if (volumes.empty() && part.shared) {
    part.shared->isOver = true;
    part.shared->desk.close();
    std::exchange(part.shared, nullptr)->wakeup.wake();
  } else if (part.shared) {
    part.shared->wanted.put(volumes);
    part.shared->wakeup.wake();
  } else if (!volumes.empty()) {
    start(part);
  }
}

void LinuxVolumeCategories::start(Part& part) {
  // Those that are not needed any more may be held up by file systems that do not answer.
  constexpr int mostThreads = 4;
  static std::array<std::atomic<int>, 2> threads = {};
  auto& running = threads[part.mayHang ? 1 : 0];
  if (running >= mostThreads) return;
  auto shared = std::make_shared<Shared>();
  shared->wanted.put(part.wanted);
  if (!shared->wakeup || !shared->desk) return;
  // From here, since a thread starts with the priority of the one that starts it.
  shared->desk.open(means_.threads->detach("vantile-kinds", [shared] { shared->desk.serve(); }));
  ++running;
  const bool started = means_.threads->detach(
      "vantile-usage",
      [shared, &running, retry = means_.retry,
       means = [make = means_.accounting, mayHang = part.mayHang] { return make(mayHang); }] {
        stepBehindOthers();
        guarded("usage by category", [&] { shared->work(means, retry); });
        shared->desk.close();
        --running;
      });
  if (!started) {
    --running;
    shared->desk.close();
  } else {
    part.shared = std::move(shared);
  }
}

std::unique_ptr<VolumeCategories> makeVolumeCategories() {
  return std::make_unique<LinuxVolumeCategories>();
}

}  // namespace vantile
