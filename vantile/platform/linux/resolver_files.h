#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "vantile/platform/linux/descriptor_source.h"
#include "vantile/platform/linux/file_stamp.h"
#include "vantile/platform/posix/descriptor.h"

namespace vantile {

struct ResolverPaths {
  std::string configuration = "/etc/resolv.conf";
  std::string behindStub = "/run/systemd/resolve/resolv.conf";  ///< of systemd-resolved
};

/// The servers that the resolver's file names, or where that names systemd-resolved's stub alone,
/// those behind it. Followed on the loop of its maker's thread; used there.
class ResolverFiles {
 public:
  /// `changed` is called when the servers may have changed. Where the system has no more inotify
  /// instances, `look` alone tells.
  ResolverFiles(ResolverPaths paths, std::function<void()> changed);

  /// The servers now. The files are read after events, and when their stamps have changed.
  const std::vector<std::string>& look();

 private:
  void onEvents();
  void watch();

  const ResolverPaths paths_;
  const std::function<void()> changed_;
  std::optional<FileStamp> configurationStamp_, stubStamp_;
  bool looked_ = false;
  std::vector<std::string> servers_;
  Descriptor instance_;
  std::vector<int> watches_;                  // sorted
  std::unique_ptr<DescriptorSource> source_;  // the last, so that it goes first
};

}  // namespace vantile
