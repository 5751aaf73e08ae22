#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vantile {

/// Calls `take` with each of the names in a list, each of which ends in a NUL.
template <class Take>
void forEachName(std::string_view names, Take take) {
  while (!names.empty()) {
    const auto name = names.substr(0, names.find('\0'));
    take(name);
    names.remove_prefix(name.size() < names.size() ? name.size() + 1 : name.size());
  }
}

/// Names, each with its NUL, of however many files: a text that doubled each time that it is full
/// would take three times their length.
class NameList {
 public:
  NameList() = default;
  explicit NameList(std::string_view names) { add(names); }

  void append(std::string_view name);
  /// Puts some of a list behind what is here, in parts that may end within a name.
  void add(std::string_view names);
  /// Puts all of `other` behind what is here. Of both together no more is in memory than of one.
  void take(NameList other);
  /// In bytes.
  std::size_t size() const { return size_; }
  /// Copies `size` bytes from byte `from` on, which have to be there.
  void copy(std::size_t from, char* to, std::size_t size) const;

 private:
  static constexpr std::size_t pieceSize = 65536;  // of each but the last

  std::vector<std::string> pieces_;
  std::size_t size_ = 0;
};

}  // namespace vantile
