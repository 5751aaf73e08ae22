#include "vantile/platform/parsers/usage_record.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

#include "vantile/platform/parsers/packed_contents.h"

namespace vantile {
namespace {

// A change of what is written, or of what counts as what, needs a further number.
constexpr std::string_view version = "vantile usage 4\n";

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

void appendText(std::string& text, std::string_view written) {
  appendPacked(text, written.size());
  text.append(written);
}

std::string volumePart(const UsageVolume& volume) {
  std::string text;
  appendFixed(text, volume.fileSystem);
  appendFixed(text, volume.root);
  appendText(text, volume.identifier);
  appendText(text, volume.mountPoint);
  return text;
}

/// A folder, without its names.
std::string folderPart(const UsageIndex& index, UsageIndex::Number folder) {
  std::uint64_t below = 0;
  for (auto at = index.first(folder); at != UsageIndex::none; at = index.next(at)) ++below;
  std::string text;
  appendFixed(text, index.stamp(folder));
  appendPacked(text, below);
  appendText(text, index.packed(folder));
  return text;
}

/// Hands on what is written in pieces of one size, and adds it up.
class Writer {
 public:
  explicit Writer(const std::function<bool(std::string_view piece)>& sink) : sink_(sink) {}

  /// False once the sink wants no more.
  bool add(std::string_view text) {
    constexpr std::size_t pieceSize = 65536;
    while (!text.empty()) {
      const auto part = text.substr(0, pieceSize - piece_.size());
      piece_.append(part);
      text.remove_prefix(part.size());
      if (piece_.size() == pieceSize && !flush()) return false;
    }
    return true;
  }
  bool flush() {
    checksum_.add(piece_);
    const bool goesOn = sink_(piece_);
    piece_.clear();
    return goesOn;
  }
  std::uint64_t sum() const { return checksum_.sum(); }

 private:
  const std::function<bool(std::string_view piece)>& sink_;
  std::string piece_;
  Checksum checksum_;
};

/// Takes a record apart as it comes.
class Reader {
 public:
  Reader(const UsageRecordSource& source, std::uint64_t size) : source_(source), left_(size) {}

  std::uint64_t left() const { return left_; }
  std::uint64_t sum() const { return checksum_.sum(); }
  void beginSum() { checksum_ = Checksum(); }

  std::optional<std::string> text(std::uint64_t size) {
    if (size > left_) return std::nullopt;
    std::string taken;
    taken.reserve(static_cast<std::size_t>(size));
    while (taken.size() < size) {
      const auto part = some(size - taken.size());
      if (part.empty()) return std::nullopt;
      taken.append(part);
    }
    return taken;
  }
  /// Some of what is next, up to `most` bytes; empty where no more comes.
  std::string_view some(std::uint64_t most) {
    if (piece_.empty()) piece_ = source_();
    const auto part = piece_.substr(0, static_cast<std::size_t>(std::min(most, left_)));
    checksum_.add(part);
    piece_.remove_prefix(part.size());
    left_ -= part.size();
    return part;
  }
  std::optional<std::uint64_t> fixed() {
    const auto bytes = text(sizeof(std::uint64_t));
    if (!bytes) return std::nullopt;
    std::uint64_t number = 0;
    for (unsigned at = 0; at < sizeof number; ++at)
      number |= std::uint64_t{static_cast<unsigned char>((*bytes)[at])} << (8 * at);
    return number;
  }
  std::optional<std::uint64_t> packed() {
    constexpr std::size_t longest = 10;
    std::string bytes;
    do {
      const auto byte = text(1);
      if (!byte || bytes.size() == longest) return std::nullopt;
      bytes += *byte;
    } while (static_cast<unsigned char>(bytes.back()) >= 128);
    std::string_view number = bytes;
    return takePacked(number);
  }

 private:
  const UsageRecordSource& source_;
  std::uint64_t left_;
  std::string_view piece_;
  Checksum checksum_;
};

/// A folder some of whose folders are still to be read.
struct Begun {
  UsageIndex::Number folder, last = UsageIndex::none;
  std::uint64_t left = 0;
};

/// Folders stand before what is in them.
bool readFolders(Reader& reader, UsageIndex& index) {
  std::vector<Begun> around = {{UsageIndex::none, UsageIndex::none, 1}};
  while (!around.empty()) {
    if (around.back().left == 0) {
      around.pop_back();
      continue;
    }
    --around.back().left;
    const auto stamp = reader.fixed();
    const auto below = stamp ? reader.packed() : std::nullopt;
    const auto size = below ? reader.packed() : std::nullopt;
    const auto packed = size ? reader.text(*size) : std::nullopt;
    if (!packed) return false;
    auto& parent = around.back();
    const auto number = index.addPacked(parent.folder, parent.last, *stamp, *packed);
    if (number == UsageIndex::none) return false;
    parent.last = number;
    around.push_back({number, UsageIndex::none, *below});
  }
  return true;
}

/// To the end.
bool readNames(Reader& reader, std::uint64_t size) {
  if (reader.left() != size) return false;
  while (reader.left() > 0)
    if (reader.some(reader.left()).empty()) return false;
  return true;
}

bool writeFolders(Writer& writer, const UsageIndex& index) {
  bool goesOn = true;
  index.forEachFolder([&](UsageIndex::Number folder) {
    goesOn = writer.add(folderPart(index, folder));
    return goesOn;
  });
  return goesOn;
}

/// Adds the folders whose names can't be read to `unreadable`.
bool writeNames(Writer& writer, const UsageIndex& index,
                std::vector<UsageIndex::Number>& unreadable) {
  bool goesOn = true;
  std::string names;
  index.forEachFolder([&](UsageIndex::Number folder) {
    const auto size = index.namesSize(folder);
    for (std::uint64_t from = 0; goesOn && from < size; from += names.size()) {
      if (!index.readNames(folder, from, names)) {
        unreadable.push_back(folder);
        break;
      }
      goesOn = writer.add(names);
    }
    return goesOn;
  });
  return goesOn;
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

std::optional<std::string> writeUsageRecord(
    const UsageVolume& volume, bool complete, UsageIndex& index,
    const std::function<bool(std::string_view piece)>& sink) {
  Writer writer(sink);
  std::vector<UsageIndex::Number> unreadable;
  const bool goesOn = writer.add(volumePart(volume) + (complete ? '\1' : '\0')) &&
                      writeFolders(writer, index) && writeNames(writer, index, unreadable) &&
                      writer.flush();
  for (const auto folder : unreadable) index.setContents(folder, 0, index.sums(folder), NameList());
  if (!goesOn || !unreadable.empty()) return std::nullopt;
  std::string head(version);
  appendFixed(head, writer.sum());
  return head;
}

std::optional<UsageRecord> readUsageRecord(const UsageRecordSource& source, std::uint64_t size,
                                           const UsageVolume& volume) {
  Reader reader(source, size);
  if (reader.text(version.size()) != version) return std::nullopt;
  const auto sum = reader.fixed();
  reader.beginSum();
  const auto known = volumePart(volume);
  if (!sum || reader.text(known.size()) != known) return std::nullopt;
  const auto complete = reader.text(1);
  UsageRecord record;
  if (!complete || !readFolders(reader, record.index) ||
      !readNames(reader, record.index.keptSize()) || reader.sum() != *sum)
    return std::nullopt;
  record.complete = *complete == "\1";
  return record;
}

}  // namespace vantile
