#pragma once

#include <atomic>
#include <memory>
#include <utility>

namespace vantile {

/// Hands the latest of some messages from one thread to another. Neither waits for the other, which
/// may be of so low a priority that it does not get on.
template <class Message>
class Mailbox {
 public:
  Mailbox() = default;
  ~Mailbox() { delete held_.load(); }
  Mailbox(const Mailbox&) = delete;
  Mailbox& operator=(const Mailbox&) = delete;

  /// Replaces what was not taken.
  void put(Message message) {
    const std::unique_ptr<Message> before(
        held_.exchange(std::make_unique<Message>(std::move(message)).release()));
  }
  /// What was put last, or null where that was taken before.
  std::unique_ptr<Message> take() { return std::unique_ptr<Message>(held_.exchange(nullptr)); }
  bool isEmpty() const { return held_.load() == nullptr; }

 private:
  std::atomic<Message*> held_ = nullptr;
};

}  // namespace vantile
