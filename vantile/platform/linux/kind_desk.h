#pragma once

#include <atomic>
#include <optional>
#include <string>

#include "vantile/platform/linux/content_kinds.h"
#include "vantile/platform/linux/mailbox.h"
#include "vantile/platform/linux/wakeup.h"

namespace vantile {

/// Where a thread that may not get the processor for long has names looked up by one that does: GIO
/// holds a lock meanwhile, and the host's threads that want it would wait as long. The kernel lets
/// nobody but root step in front again for the moment.
class KindDesk {
 public:
  explicit KindDesk(ContentKinds::Look look = kindByDatabase) : look_(std::move(look)) {}
  explicit operator bool() const { return asked_ && answered_; }

  /// Answers until it is closed. On the thread that looks up.
  void serve();
  /// The one that serves was started, or could not be. Before anything is asked.
  void open(bool isServed) { hasLeft_ = !isServed; }
  /// Waits for nobody. Any thread.
  void close();

  /// The kind, by the thread that serves; where none does any more, looked up here. One thread.
  std::optional<UsageKind> of(const std::string& name);

 private:
  struct Answer {
    std::optional<UsageKind> kind;
  };

  const ContentKinds::Look look_;
  Wakeup asked_, answered_;
  Mailbox<std::string> question_;
  Mailbox<Answer> answer_;
  std::atomic<bool> isClosed_ = false, hasLeft_ = false;
};

}  // namespace vantile
