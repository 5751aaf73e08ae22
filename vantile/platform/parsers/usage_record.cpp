#include "vantile/platform/parsers/usage_record.h"

#include <cstddef>
#include <utility>
#include <vector>

#include "vantile/platform/parsers/packed_contents.h"

namespace vantile {
namespace {

// A change of what is written, or of what counts as what, needs a further number.
constexpr std::string_view version = "vantile usage 1\n";

/// A checksum against damage, FNV-1a.
class Checksum {
 public:
  void add(std::string_view text) {
    for (const char byte : text) {
      sum_ ^= static_cast<unsigned char>(byte);
      sum_ *= 0x100000001b3;
    }
  }
  std::uint64_t sum() const { return sum_; }

 private:
  std::uint64_t sum_ = 0xcbf29ce484222325;
};

void appendFixed(std::string& text, std::uint64_t number) {
  for (int shift = 0; shift < 64; shift += 8) text.push_back(static_cast<char>(number >> shift));
}

std::optional<std::uint64_t> takeFixed(std::string_view& text) {
  if (text.size() < sizeof(std::uint64_t)) return std::nullopt;
  std::uint64_t number = 0;
  for (unsigned at = 0; at < sizeof number; ++at)
    number |= std::uint64_t{static_cast<unsigned char>(text[at])} << (8 * at);
  text.remove_prefix(sizeof number);
  return number;
}

void appendText(std::string& text, std::string_view written) {
  appendPacked(text, written.size());
  text.append(written);
}

std::optional<std::string_view> takeText(std::string_view& text) {
  const auto size = takePacked(text);
  if (!size || *size > text.size()) return std::nullopt;
  const auto taken = text.substr(0, static_cast<std::size_t>(*size));
  text.remove_prefix(taken.size());
  return taken;
}

std::string volumePart(const UsageVolume& volume) {
  std::string text;
  appendFixed(text, volume.fileSystem);
  appendFixed(text, volume.root);
  appendText(text, volume.mountPoint);
  return text;
}

void appendFolder(std::string& text, const UsageIndex& index, UsageIndex::Number folder) {
  std::uint64_t below = 0;
  for (auto at = index.first(folder); at != UsageIndex::none; at = index.next(at)) ++below;
  appendFixed(text, index.stamp(folder));
  appendPacked(text, below);
  appendText(text, index.packed(folder));
}

/// A folder some of whose folders are still to be read.
struct Begun {
  UsageIndex::Number folder, last = UsageIndex::none;
  std::uint64_t left = 0;
};

/// Folders stand before what is in them.
bool readFolders(std::string_view text, UsageIndex& index) {
  std::vector<Begun> around = {{UsageIndex::none, UsageIndex::none, 1}};
  while (!around.empty()) {
    if (around.back().left == 0) {
      around.pop_back();
      continue;
    }
    --around.back().left;
    const auto stamp = takeFixed(text);
    const auto below = stamp ? takePacked(text) : std::nullopt;
    const auto packed = below ? takeText(text) : std::nullopt;
    if (!packed) return false;
    auto& parent = around.back();
    const auto number = index.addPacked(parent.folder, parent.last, *stamp, *packed);
    if (number == UsageIndex::none) return false;
    parent.last = number;
    around.push_back({number, UsageIndex::none, *below});
  }
  return text.empty();
}

}  // namespace

std::string usageRecordName(const UsageVolume& volume) {
  Checksum checksum;
  checksum.add(volumePart(volume));
  std::string name = "usage-";
  for (int shift = 60; shift >= 0; shift -= 4)
    name.push_back("0123456789abcdef"[checksum.sum() >> shift & 15]);
  return name;
}

std::string writeUsageRecord(const UsageVolume& volume, bool complete, const UsageIndex& index,
                             const std::function<void(std::string_view piece)>& sink) {
  constexpr std::size_t pieceSize = 65536;
  Checksum checksum;
  std::string piece = volumePart(volume);
  piece.push_back(complete ? '\1' : '\0');
  const auto flush = [&] {
    checksum.add(piece);
    sink(piece);
    piece.clear();
  };
  std::vector<UsageIndex::Number> next = {UsageIndex::root};
  while (!next.empty()) {
    const auto folder = next.back();
    next.pop_back();
    appendFolder(piece, index, folder);
    if (folder != UsageIndex::root && index.next(folder) != UsageIndex::none)
      next.push_back(index.next(folder));
    if (index.first(folder) != UsageIndex::none) next.push_back(index.first(folder));
    if (piece.size() >= pieceSize) flush();
  }
  flush();
  std::string head(version);
  appendFixed(head, checksum.sum());
  return head;
}

std::optional<UsageRecord> readUsageRecord(std::string_view text, const UsageVolume& volume) {
  if (!text.starts_with(version)) return std::nullopt;
  text.remove_prefix(version.size());
  const auto sum = takeFixed(text);
  Checksum checksum;
  checksum.add(text);
  const auto known = volumePart(volume);
  if (sum != checksum.sum() || !text.starts_with(known)) return std::nullopt;
  text.remove_prefix(known.size());
  if (text.empty()) return std::nullopt;
  UsageRecord record;
  record.complete = text.front() == '\1';
  text.remove_prefix(1);
  if (!readFolders(text, record.index)) return std::nullopt;
  return record;
}

}  // namespace vantile
