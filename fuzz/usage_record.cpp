#include "vantile/platform/parsers/usage_record.h"

#include <algorithm>
#include <map>

#include "fuzz/fuzzer.h"

namespace vantile::fuzz {
namespace {

using Number = UsageIndex::Number;

std::string littleEndian(std::uint64_t number) {
  std::string text(8, '\0');
  for (auto& byte : text) {
    byte = static_cast<char>(number & 255);
    number /= 256;
  }
  return text;
}

/// A record of the volume without a name whose checksum is right, whatever it says.
std::string sealed(std::string_view said) {
  const std::string text = std::string(18, '\0') + std::string(said);
  std::uint64_t sum = 14695981039346656037ull;
  for (const char byte : text) sum = (sum ^ static_cast<unsigned char>(byte)) * 1099511628211ull;
  return "vantile usage 3\n" + littleEndian(sum) + text;
}

std::string writtenAgain(const UsageRecord& record) {
  std::string body;
  const auto head =
      writeUsageRecord({}, record.complete, record.index, [&body](std::string_view piece) {
        body.append(piece);
        return true;
      });
  return head.value() + body;
}

/// The text's record, which comes in pieces that end within its parts.
std::optional<UsageRecord> read(std::string_view text) {
  constexpr std::size_t pieceSize = 13;
  auto left = text;
  const UsageRecordSource source = [&left] {
    const auto piece = left.substr(0, pieceSize);
    left.remove_prefix(piece.size());
    return piece;
  };
  return readUsageRecord(source, text.size(), {});
}

std::vector<Number> foldersIn(const UsageIndex& index) {
  std::vector<Number> found, next = {UsageIndex::root};
  while (!next.empty()) {
    found.push_back(next.back());
    next.pop_back();
    const auto first = next.size();
    for (auto at = index.first(found.back()); at != UsageIndex::none; at = index.next(at))
      next.push_back(at);
    std::reverse(next.begin() + static_cast<std::ptrdiff_t>(first), next.end());
  }
  return found;
}

/// What is counted, added up anew.
UsageSums sumsOf(const UsageIndex& index) {
  UsageSums sums = {};
  std::map<std::uint64_t, LinkedFile> linked;
  for (const auto folder : foldersIn(index)) {
    const auto contents = index.contents(folder);
    for (std::size_t kind = 0; kind < usageKinds; ++kind) sums[kind] += contents.blocks[kind];
    for (const auto& file : contents.linked) {
      auto& known = linked.try_emplace(file.inode, file).first->second;
      known.kind = std::min(known.kind, file.kind);
      known.blocks = file.blocks;
    }
  }
  for (const auto& [inode, file] : linked) sums[static_cast<std::size_t>(file.kind)] += file.blocks;
  return sums;
}

void readWhatIsSealed(std::string_view input) {
  const auto record = read(sealed(input));
  if (!record) return;
  require(record->index.size() <= input.size(), "folders are not made up");
  require(foldersIn(record->index).size() == record->index.size(), "no folder is lost");
  require(sumsOf(record->index) == record->index.blocks(), "what is counted adds up");
  const auto again = read(writtenAgain(*record));
  require(again && again->complete == record->complete, "what is written is read again");
  require(again->index.blocks() == record->index.blocks() &&
              again->index.size() == record->index.size(),
          "what is read again is the same");
}

/// Changes an index as the input says, three bytes a change.
void change(std::string_view input) {
  UsageRecord record;
  record.complete = true;
  auto& index = record.index;
  for (; input.size() >= 3; input.remove_prefix(3)) {
    const auto byte = [input](std::size_t at) { return static_cast<unsigned char>(input[at]); };
    const auto folders = foldersIn(index);
    const auto folder = folders[byte(1) % folders.size()];
    if (byte(0) % 4 == 0) {
      std::string names;
      for (unsigned bit = 0; bit < 8; ++bit)
        if (byte(2) >> bit & 1) names.append(1, static_cast<char>('a' + bit)).push_back('\0');
      index.setFolders(folder, names);
    } else if (byte(0) % 4 == 1) {
      index.clear(folder);
    } else {
      FolderContents contents;
      contents.blocks[byte(0) / 4 % usageKinds] = byte(2);
      for (std::uint64_t inode = 1; inode < byte(2) % 8; ++inode)
        contents.linked.push_back({inode, inode * 8, UsageKind(byte(0) / 4 % usageKinds)});
      contents.files.assign(2, 'n').push_back('\0');
      index.setContents(folder, byte(2), contents);
      require(index.contents(folder) == contents, "contents come back");
      if (byte(0) % 4 == 3) {
        contents.blocks[0] = byte(1);
        index.setSums(folder, contents);
        require(index.contents(folder) == contents, "so do sums of the same files");
      }
    }
    require(sumsOf(index) == index.blocks(), "what is counted adds up");
  }
  require(foldersIn(index).size() == index.size(), "no folder is lost");
  const auto again = read(writtenAgain(record));
  require(again && again->index.blocks() == index.blocks(), "any index is read again");
}

}  // namespace

void consume(std::string_view input) {
  require(!read(input) || input.starts_with("vantile usage 3\n"), "a record is of this version");
  readWhatIsSealed(input);
  change(input.substr(0, 300));
}

}  // namespace vantile::fuzz
