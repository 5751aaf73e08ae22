#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace vantile::testing {

/// Receives what the folder functions report, whose callbacks take no context. One at a time.
class RecordedItems {
 public:
  RecordedItems() { receiver() = this; }
  ~RecordedItems() { receiver() = nullptr; }
  RecordedItems(const RecordedItems&) = delete;
  RecordedItems& operator=(const RecordedItems&) = delete;

  static void item(const char* path, std::int32_t kind) {
    receiver()->items.emplace_back(path, kind);
    receiver()->called();
  }
  static void download(const char* path) {
    receiver()->downloads.emplace_back(path);
    receiver()->called();
  }

  void clear() {
    items.clear();
    downloads.clear();
  }

  std::vector<std::pair<std::string, std::int32_t>> items;
  std::vector<std::string> downloads;
  std::set<std::thread::id> threads;  ///< that were called on
  std::function<void()> onItem;       ///< called at each item

 private:
  static RecordedItems*& receiver() {
    static RecordedItems* current = nullptr;
    return current;
  }
  void called() {
    threads.insert(std::this_thread::get_id());
    if (const auto call = onItem) call();
  }
};

}  // namespace vantile::testing
