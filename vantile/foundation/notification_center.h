#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "vantile/foundation/api.h"
#include "vantile/foundation/value.h"

namespace vantile {

/// What a notification tells its observers.
struct Notification {
  std::string name;
  const void* object = nullptr;          ///< who posted it; only its address counts
  const Dictionary* userInfo = nullptr;  ///< valid during the call; may be null
};

/// Passes notifications from who posts them to who observes their name. Any thread.
class VANTILE_API NotificationCenter {
 public:
  using Observer = std::function<void(const Notification&)>;

  /// Keeps an observer registered for as long as it lives. It may go inside the observer's own
  /// call; once it has gone on the posting thread, nothing calls the observer any more.
  class VANTILE_API Registration {
   public:
    Registration() = default;
    Registration(Registration&&) noexcept = default;
    Registration& operator=(Registration&&) noexcept = default;

   private:
    friend class NotificationCenter;
    explicit Registration(std::shared_ptr<const Observer> observer)
        : observer_(std::move(observer)) {}
    std::shared_ptr<const Observer> observer_;
  };

  /// The centre on which the library posts, shared by the process; never destroyed.
  static NotificationCenter& workspace();

  /// Calls `observer` for each notification called `name`, on the thread that posts it.
  [[nodiscard]] Registration observe(std::string name, Observer observer);

  /// Calls the observers of the notification's name in the order of their registration and
  /// returns. What an observer throws becomes a log line.
  void post(const Notification& notification);

 private:
  struct Entry {
    std::string name;
    std::weak_ptr<const Observer> observer;
  };

  std::mutex mutex_;
  std::vector<Entry> entries_;
};

}  // namespace vantile
