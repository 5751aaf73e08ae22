#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace vantile {

/// A text for where there are very many: 16 bytes, half of std::string, and as many again as it
/// has where these are more than 15.
class CompactText {
 public:
  CompactText() = default;
  explicit CompactText(std::string_view text) {
    if (text.size() > std::numeric_limits<Size>::max()) throw std::length_error("too long a text");
    if (text.size() <= mostWithin) {
      bytes_.back() = static_cast<char>(text.size());
    } else {
      char* const block = new char[text.size()];
      const auto length = static_cast<Size>(text.size());
      std::memcpy(bytes_.data(), &block, sizeof block);
      std::memcpy(bytes_.data() + sizeof block, &length, sizeof length);
      bytes_.back() = elsewhere;
    }
    text.copy(data(), text.size());
  }
  CompactText(CompactText&& other) noexcept : bytes_(std::exchange(other.bytes_, {})) {}
  CompactText& operator=(CompactText&& other) noexcept {
    CompactText taken(std::move(other));
    std::swap(bytes_, taken.bytes_);
    return *this;
  }
  ~CompactText() {
    if (isElsewhere()) delete[] data();
  }

  std::string_view view() const noexcept {
    return {const_cast<CompactText*>(this)->data(), size()};
  }

 private:
  using Size = std::uint32_t;
  static constexpr std::size_t mostWithin = 15;
  static constexpr char elsewhere = 16;  // in place of the size

  char* data() noexcept {
    char* text = bytes_.data();
    if (isElsewhere()) std::memcpy(&text, bytes_.data(), sizeof text);
    return text;
  }
  bool isElsewhere() const noexcept { return bytes_.back() == elsewhere; }
  std::size_t size() const noexcept {
    if (!isElsewhere()) return static_cast<std::size_t>(bytes_.back());
    Size size = 0;
    std::memcpy(&size, bytes_.data() + sizeof(char*), sizeof size);
    return size;
  }

  std::array<char, mostWithin + 1> bytes_ = {};  // text and size, or where both are
};

}  // namespace vantile
