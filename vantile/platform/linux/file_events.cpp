#include "vantile/platform/linux/file_events.h"

#include <sys/eventfd.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "vantile/platform/linux/inotify_queue.h"
#include "vantile/platform/linux/statx.h"
#include "vantile/platform/parsers/text.h"
#include "vantile/platform/posix/files.h"

namespace vantile {
namespace {

bool isToken(int watched) {
  return watched >= FileEvents::firstToken;
}

// The kernel says EMFILE for a want of descriptors and for a want of inotify instances. This is how
// the second is called here; the kernel gives it for neither.
constexpr int noInstanceLeft = EUSERS;

bool hasDescriptorLeft() {
  return static_cast<bool>(Descriptor(::eventfd(0, EFD_CLOEXEC)));
}

}  // namespace

LinuxFileEvents::LinuxFileEvents(LinuxRoots roots)
    : roots_(std::move(roots)), items_(std::make_shared<WatchedItems>()) {}

std::shared_ptr<FileEventQueue> LinuxFileEvents::newQueue(int& error) {
  auto queue = InotifyQueue::make(items_, roots_, error);
  if (!queue && error == EMFILE && hasDescriptorLeft()) error = noInstanceLeft;
  return queue;
}

void LinuxFileEvents::close(int watched) {
  if (!isToken(watched)) {
    const Descriptor closed(watched);
  } else if (const auto queue = items_->close(watched)) {
    queue->drop(watched);
  }
}

void LinuxFileEvents::standsAt(int watched, const std::string& path) {
  if (const auto queue = items_->queueOf(watched)) queue->standsAt(watched, path);
}

std::optional<FileIdentity> LinuxFileEvents::identity(int watched) {
  if (isToken(watched)) return items_->identity(watched);
  if (watched < 0) return std::nullopt;
  const auto status = statusOf(watched, "", AT_EMPTY_PATH, STATX_INO);
  return status ? std::optional(identityOf(*status)) : std::nullopt;
}

std::string LinuxFileEvents::limit(const char* name) const {
  const auto text = contentsOf(roots_.sysctl + "/" + name).value_or("not told");
  std::string dotted = name;
  std::replace(dotted.begin(), dotted.end(), '/', '.');
  std::string_view rest = text;
  return dotted.append(" is ").append(takeLine(rest));
}

std::optional<std::string> LinuxFileEvents::limitBehind(int error) {
  switch (error) {
    case ENOSPC:
      return limit("fs/inotify/max_user_watches");
    case noInstanceLeft:
      return limit("fs/inotify/max_user_instances");
    case ENFILE:
      return limit("fs/file-max");
    case EMFILE: {
      rlimit descriptors = {};
      ::getrlimit(RLIMIT_NOFILE, &descriptors);
      return "RLIMIT_NOFILE is " + std::to_string(descriptors.rlim_cur);
    }
    default:
      return std::nullopt;
  }
}

std::shared_ptr<FileEvents> systemFileEvents() {
  static auto& events = *new std::shared_ptr<FileEvents>(std::make_shared<LinuxFileEvents>());
  return events;
}

}  // namespace vantile
