#pragma once

#include <libmnl/libmnl.h>
#include <linux/netlink.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace vantile {

/// A request of netlink, put together in place. Attributes that do not fit are left out.
class NetlinkRequest {
 public:
  NetlinkRequest(std::uint16_t type, std::uint16_t flags) {
    header_ = ::mnl_nlmsg_put_header(bytes_.data());
    header_->nlmsg_type = type;
    header_->nlmsg_flags = static_cast<std::uint16_t>(NLM_F_REQUEST | flags);
  }
  NetlinkRequest(const NetlinkRequest&) = delete;
  NetlinkRequest& operator=(const NetlinkRequest&) = delete;

  /// The family's own header, zeroed; to be added first.
  template <class Header>
  Header& header() {
    return *static_cast<Header*>(::mnl_nlmsg_put_extra_header(header_, sizeof(Header)));
  }
  NetlinkRequest& add(std::uint16_t type, std::uint32_t number) {
    ::mnl_attr_put_u32_check(header_, bytes_.size(), type, number);
    return *this;
  }
  /// With a terminating zero; 63 bytes at most.
  NetlinkRequest& add(std::uint16_t type, std::string_view text) {
    std::array<char, 64> terminated{};
    const auto size = text.copy(terminated.data(), terminated.size() - 1);
    ::mnl_attr_put_check(header_, bytes_.size(), type, size + 1, terminated.data());
    return *this;
  }
  /// Attributes that are added until `end` belong to one of `type`.
  nlattr* begin(std::uint16_t type) { return ::mnl_attr_nest_start(header_, type); }
  void end(nlattr* nest) { ::mnl_attr_nest_end(header_, nest); }

  void setSequence(std::uint32_t number) { header_->nlmsg_seq = number; }
  std::string_view bytes() const { return {bytes_.data(), header_->nlmsg_len}; }

 private:
  alignas(nlmsghdr) std::array<char, 256> bytes_{};
  nlmsghdr* header_ = nullptr;
};

}  // namespace vantile
