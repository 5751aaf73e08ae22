#pragma once

#include <memory>
#include <optional>
#include <string>

#include "vantile/platform/file_events.h"
#include "vantile/platform/linux/roots.h"
#include "vantile/platform/linux/watched_items.h"

namespace vantile {

class LinuxFileEvents final : public FileEvents {
 public:
  explicit LinuxFileEvents(LinuxRoots roots = {});

  std::shared_ptr<FileEventQueue> newQueue(int& error) override;
  int open(const std::string& path) override { return items_->open(path); }
  void close(int watched) override;
  void standsAt(int watched, const std::string& path) override;
  std::optional<FileIdentity> identity(int watched) override;
  std::optional<std::string> limitBehind(int error) override;

  /// Items that are open.
  std::size_t openItems() const { return items_->size(); }

 private:
  std::string limit(const char* name) const;

  const LinuxRoots roots_;
  const std::shared_ptr<WatchedItems> items_;
};

}  // namespace vantile
