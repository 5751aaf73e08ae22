#pragma once

#include <cerrno>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "vantile/platform/linux/netlink_channel.h"

#include "fakes/netlink_bytes.h"

namespace vantile::testing {

/// The kernel's side of netlink, as tests set it. Outlives the channels to it.
struct FakeNetlink {
  using Outcome = NetlinkChannel::Outcome;
  /// The datagrams that answer a request.
  using Answer =
      std::function<std::vector<std::string>(std::uint32_t sequence, std::string_view request)>;

  std::map<std::uint16_t, Answer> answers;  ///< by the request's type; none: the request is refused
  std::deque<std::pair<Outcome, std::string>> events;
  std::function<void(std::uint16_t type)> onRequest;
  std::function<void()> onNothing;  ///< whoever follows has heard all
  int descriptor = -1;              ///< of the channels
  bool opens = true;

  std::vector<std::uint16_t> requests;
  int opened = 0, receives = 0, openNow = 0;

  void tell(std::string datagram) { events.emplace_back(Outcome::datagram, std::move(datagram)); }

  /// Answers with messages of `type` that have these payloads.
  static Answer list(std::uint16_t type, std::vector<std::string> payloads,
                     std::uint16_t endFlags = 0) {
    return [=](std::uint32_t sequence, std::string_view) {
      std::string datagram;
      for (const auto& each : payloads) datagram += message(type, each, 2, sequence);
      return std::vector{datagram, endOfList(sequence, 0, endFlags)};
    };
  }
  static Answer refusal(std::int32_t error) {
    return [=](std::uint32_t sequence, std::string_view) {
      return std::vector{message(2, bytesOf(-error), 0, sequence)};
    };
  }
  /// One message and the acknowledgement.
  static Answer one(std::uint16_t type, const std::string& payload) {
    return [=](std::uint32_t sequence, std::string_view) {
      return std::vector{message(type, payload, 0, sequence),
                         message(2, bytesOf(std::int32_t{0}), 0, sequence)};
    };
  }

  OpenNetlink opener() {
    return [this](int, unsigned groups) { return open(groups); };
  }

 private:
  class Channel final : public NetlinkChannel {
   public:
    Channel(FakeNetlink& kernel, bool follows) : kernel_(kernel), follows_(follows) {
      ++kernel_.openNow;
    }
    ~Channel() override { --kernel_.openNow; }

    bool send(std::string_view request) override {
      std::uint16_t type = 0;
      std::uint32_t sequence = 0;
      std::memcpy(&type, request.data() + 4, sizeof type);
      std::memcpy(&sequence, request.data() + 8, sizeof sequence);
      kernel_.requests.push_back(type);
      if (kernel_.onRequest) kernel_.onRequest(type);
      const auto answer = kernel_.answers.find(type);
      if (answer == kernel_.answers.end()) return false;
      for (auto& each : answer->second(sequence, request))
        waiting_.emplace_back(Outcome::datagram, std::move(each));
      return true;
    }

    Outcome receive() override {
      ++kernel_.receives;
      auto& waiting = follows_ ? kernel_.events : waiting_;
      datagram_.clear();
      if (waiting.empty()) {
        if (follows_ && kernel_.onNothing) kernel_.onNothing();
        return Outcome::nothing;
      }
      auto [outcome, bytes] = std::move(waiting.front());
      waiting.pop_front();
      datagram_ = std::move(bytes);
      return outcome;
    }

    std::string_view datagram() const override { return datagram_; }
    int descriptor() const override { return kernel_.descriptor; }

   private:
    FakeNetlink& kernel_;
    const bool follows_;
    std::deque<std::pair<Outcome, std::string>> waiting_;
    std::string datagram_;
  };

  std::unique_ptr<NetlinkChannel> open(unsigned groups) {
    if (!opens) return nullptr;
    ++opened;
    return std::make_unique<Channel>(*this, groups != 0);
  }
};

}  // namespace vantile::testing
