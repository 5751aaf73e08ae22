#pragma once

#include <string_view>
#include <unordered_set>

namespace vantile {

/// The watch descriptors that an inotify instance still has, from /proc/PID/fdinfo/FD: a line
/// "inotify wd:3 ino:9e7e sdev:800013 mask:800afce …" each, wd in hexadecimal. Other lines are
/// passed over.
std::unordered_set<int> parseInotifyWatches(std::string_view text);

}  // namespace vantile
