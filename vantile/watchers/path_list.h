#pragma once

#include <cstddef>
#include <string>
#include <unordered_set>
#include <vector>

#include "vantile/foundation/api.h"

namespace vantile {

/// Paths in the order in which they were added, each once. Not synchronised.
class PathList {
 public:
  bool contains(const std::string& path) const { return known_.contains(path); }
  bool empty() const { return paths_.empty(); }
  std::size_t size() const { return paths_.size(); }
  const std::vector<std::string>& paths() const { return paths_; }
  auto begin() const { return paths_.begin(); }
  auto end() const { return paths_.end(); }

  /// Whether the path was new.
  bool add(const std::string& path) {
    if (!known_.insert(path).second) return false;
    paths_.push_back(path);
    return true;
  }
  /// Whether the path was there.
  bool remove(const std::string& path) {
    if (known_.erase(path) == 0) return false;
    std::erase(paths_, path);
    return true;
  }
  template <class Unwanted>
  void removeIf(Unwanted unwanted) {
    std::erase_if(paths_, [this, &unwanted](const std::string& path) {
      if (!unwanted(path)) return false;
      known_.erase(path);
      return true;
    });
  }
  void clear() {
    paths_.clear();
    known_.clear();
  }

 private:
  std::vector<std::string> paths_;
  std::unordered_set<std::string> known_;
};

}  // namespace vantile
