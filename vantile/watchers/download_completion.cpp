// The end of a download: what to report for it, and when.

#include <algorithm>
#include <array>
#include <chrono>
#include <string_view>
#include <utility>

#include "vantile/foundation/queue.h"
#include "vantile/utility/general_utility.h"
#include "vantile/utility/paths.h"
#include "vantile/utility/strings.h"
#include "vantile/watchers/browser_table.h"
#include "vantile/watchers/watch_download.h"
#include "vantile/watchers/watcher_ports.h"

namespace vantile {
namespace {

constexpr auto unpackingTime = std::chrono::seconds(2);

constexpr std::array<std::string_view, 7> archives = {".rar",     ".zip",   ".tar",   ".tar.gz",
                                                      ".tar.bz2", ".tar.Z", ".tar.xz"};
// Those that Safari unpacks into a file. That .tar.Z is not among them is as it should be.
constexpr std::array<std::string_view, 4> safariArchives = {".tar.bz2", ".tar", ".rar", ".tar.xz"};

template <class Suffixes>
bool endsWithOneOf(std::string_view path, const Suffixes& suffixes) {
  return std::any_of(suffixes.begin(), suffixes.end(),
                     [path](std::string_view suffix) { return path.ends_with(suffix); });
}

std::string numbered(const std::string& path, int number) {
  return path + "-" + std::to_string(number);
}

/// The first entry of Safari's history whose path while downloading has `name` in it, or null.
const Dictionary* entryWith(const Dictionary& history, const std::string& name) {
  const auto* const value = history.find("DownloadHistory");
  const auto* const entries = value ? value->as<std::shared_ptr<Array>>() : nullptr;
  if (!entries || !*entries) return nullptr;
  for (const auto& entry : **entries) {
    const auto* const held = entry.as<std::shared_ptr<Dictionary>>();
    if (!held || !*held) continue;
    const auto* const path = (*held)->text("DownloadEntryPath");
    if (path && path->find(name) != std::string::npos) return held->get();
  }
  return nullptr;
}

/// Where Safari put the download of a history's entry in the end.
std::optional<std::string> finalPath(const Dictionary& entry) {
  const auto* const path = entry.text("DownloadEntryPostPath");
  if (!path) return std::nullopt;
  return startWithString(*path, "~/") ? GeneralUtility::userHomePath() + path->substr(1) : *path;
}

}  // namespace

void WatchDownload::report(const std::optional<std::string>& path) {
  if (ended()) return;
  tell(delegate(), &DownloadWatchDelegate::downloadFileCompleted, path);
}

void WatchDownload::notifyDownloadCompletedWithBrowserType(const std::string& path,
                                                           std::uint32_t browser) {
  if (browser == safariCode) return reportSafari(path);
  if (endsWithOneOf(path, archives)) {
    reportLater(path);
  } else if (exists(path)) {
    report(path);
  }
}

void WatchDownload::reportLater(const std::string& archive) {
  Queue::main().after(unpackingTime, [watcher = self(), archive, before = ends()] {
    if (watcher->ends() == before) watcher->checkArchive(archive);
  });
}

/// The browser may have unpacked the archive, and removed it: then what it became is reported.
void WatchDownload::checkArchive(const std::string& path) {
  if (exists(path)) return report(path);
  const auto extension = pathExtension(path);
  auto unpacked = withoutPathExtension(path);
  const bool single = extension == "rar" || extension == "zip" || extension == "tar";
  if (!single && !exists(unpacked)) unpacked = withoutPathExtension(unpacked);
  if (exists(unpacked)) report(unpacked);
}

/// Safari unpacks by itself, and numbers what it finds the name of taken.
void WatchDownload::reportSafari(const std::string& path) {
  if (path.ends_with(".tar.gz"))
    return report(getLatelyPathForSafariDl(withoutPathExtension(path)));
  if (endsWithOneOf(path, safariArchives) || !path.ends_with(".zip"))
    return report(getLatelyPathForSafariDl(path));
  const auto folder = getLatelyPathForSafariDl(withoutPathExtension(path));
  if (!isNilOrEmpty(folder)) return report(folder);
  if (!ports_->browsers->hasSafariFolder()) return reportLater(path);  // no history to come
  const std::lock_guard lock(historyLock_);
  safariDlsCache.push_back(path);
}

std::optional<std::string> WatchDownload::getLatelyPathForSafariDl(const std::string& path) const {
  const auto found = ports_->files->attributes(path, true);
  if (!found) return std::nullopt;
  int probes = 1;
  if (found->facts.kind == FileKind::folder) {
    // Each probe's name goes on from the one before.
    auto probe = numbered(path, 2);
    while (exists(probe)) probe = numbered(probe, ++probes + 1);
    return probes == 1 ? path : numbered(probe, probes);
  }
  const auto copy = [stem = withoutPathExtension(path), extension = pathExtension(path)](
                        int number) { return numbered(stem, number) + "." + extension; };
  while (exists(copy(probes + 1))) ++probes;
  return probes == 1 ? path : copy(probes);
}

void WatchDownload::setModifyDate(std::shared_ptr<const Date> date) {
  {
    const std::lock_guard lock(historyLock_);
    // It is which object the date is that counts, not the time.
    if (modifyDate && !std::less<>()(modifyDate.get(), date.get())) return;
    modifyDate = std::move(date);
  }
  if (!exists(safariDlsPlist)) return;
  Queue::global().async([watcher = self()] { watcher->lookUpHistory(); });
}

/// Reports the downloads that wait for their final name and that the history has by now. On a
/// background thread.
void WatchDownload::lookUpHistory() {
  const auto history = ports_->lists->read(safariDlsPlist);
  if (!history) return;  // being written, say: they go on waiting
  std::vector<std::string> waiting;
  {
    const std::lock_guard lock(historyLock_);
    waiting.swap(safariDlsCache);
  }
  for (const auto& path : waiting)
    if (const auto* const entry = entryWith(*history, lastPathComponent(path)))
      report(finalPath(*entry));
}

}  // namespace vantile
