#pragma once

#include <cerrno>
#include <cstdint>
#include <memory>
#include <type_traits>
#include <utility>

#include "vantile/platform/linux/netlink_channel.h"
#include "vantile/platform/linux/netlink_request.h"
#include "vantile/platform/parsers/netlink.h"

namespace vantile {

/// Asks the kernel through one kept channel. Not synchronised.
class NetlinkLister {
 public:
  enum class Outcome {
    whole,
    interrupted,  ///< it changed while it was listed, each time: entries may be missing or twice
    unsupported,  ///< the kernel does not know the request
    missing,      ///< there is no such thing, as no table of routes in a new network, or no link
    failed,
  };
  /// What a call for a message may answer: whether the rest of the list is wanted too.
  enum class Wanted { more, noMore };
  /// How often a list is asked for while it changes.
  static constexpr int attempts = 5;

  NetlinkLister(int bus, OpenNetlink open) : bus_(bus), open_(std::move(open)) {}

  /// Calls `take` with each message of the answer. `begin` is called before the first one, and
  /// again whenever the list begins anew. A request that is not for a list needs NLM_F_ACK.
  /// A list of which no more is wanted is whole, and the kernel does not go on with it.
  template <class Begin, class Take>
  Outcome list(NetlinkRequest& request, const Begin& begin, const Take& take) {
    for (int attempt = 1;; ++attempt) {
      begin();
      const auto outcome = listOnce(request, take);
      // What is left of an answer would be in the way of the next.
      if (outcome == Outcome::failed) channel_.reset();
      if (outcome != Outcome::interrupted || attempt == attempts) return outcome;
    }
  }

 private:
  template <class Take>
  Outcome listOnce(NetlinkRequest& request, const Take& take) {
    if (!channel_ && !(channel_ = open_(bus_, 0))) return Outcome::failed;
    request.setSequence(++sequence_);
    if (!channel_->send(request.bytes())) return Outcome::failed;
    bool interrupted = false, wanted = true;
    while (channel_->receive() == NetlinkChannel::Outcome::datagram) {
      const bool wasWanted = wanted;
      NetlinkMessages messages(channel_->datagram());
      while (const auto message = messages.next()) {
        if (message->sequence != sequence_) continue;
        interrupted |= (message->flags & NetlinkMessage::interrupted) != 0;
        const bool ended =
            message->type == NetlinkMessage::done || message->type == NetlinkMessage::failure;
        if (ended) return ending(message->error(), interrupted);
        if (wanted) wanted = isMoreWanted(take, *message);
      }
      if (wasWanted) continue;
      // A short list would have ended by now, and its channel can be kept.
      channel_.reset();
      return interrupted ? Outcome::interrupted : Outcome::whole;
    }
    return Outcome::failed;
  }

  template <class Take>
  static bool isMoreWanted(const Take& take, const NetlinkMessage& message) {
    if constexpr (std::is_same_v<decltype(take(message)), Wanted>) {
      return take(message) == Wanted::more;
    } else {
      take(message);
      return true;
    }
  }

  static Outcome ending(std::uint32_t error, bool interrupted) {
    if (error == EOPNOTSUPP) return Outcome::unsupported;
    if (error == ENOENT || error == ENODEV) return Outcome::missing;
    if (error != 0) return Outcome::failed;
    return interrupted ? Outcome::interrupted : Outcome::whole;
  }

  const int bus_;
  const OpenNetlink open_;
  std::unique_ptr<NetlinkChannel> channel_;
  std::uint32_t sequence_ = 0;
};

}  // namespace vantile
