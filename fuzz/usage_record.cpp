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
  return "vantile usage 4\n" + littleEndian(sum) + text;
}

/// Nothing where names of it can't be read.
std::optional<std::string> writtenAgain(UsageRecord& record) {
  std::string body;
  const auto head =
      writeUsageRecord({}, record.complete, record.index, [&body](std::string_view piece) {
        body.append(piece);
        return true;
      });
  return head ? std::optional(*head + body) : std::nullopt;
}

/// The text's record, which comes in pieces that end within its parts. Its index reads names there.
std::optional<UsageRecord> read(std::string_view text) {
  constexpr std::size_t pieceSize = 13;
  auto left = text;
  const UsageRecordSource source = [&left] {
    const auto piece = left.substr(0, pieceSize);
    left.remove_prefix(piece.size());
    return piece;
  };
  auto record = readUsageRecord(source, text.size(), {});
  if (record)
    record->index.setKept([text](std::uint64_t fromEnd, char* to, std::size_t size) {
      require(fromEnd <= text.size() && size <= fromEnd, "names are in the record");
      return text.copy(to, size, text.size() - static_cast<std::size_t>(fromEnd)) == size;
    });
  return record;
}

std::vector<Number> foldersIn(const UsageIndex& index) {
  std::vector<Number> found;
  index.forEachFolder([&found](Number folder) {
    found.push_back(folder);
    return true;
  });
  return found;
}

std::string namesOf(const UsageIndex& index, Number folder) {
  std::string names, piece;
  while (index.readNames(folder, names.size(), piece)) names += piece;
  return names;
}

/// What is counted, added up anew.
UsageSums sumsOf(const UsageIndex& index) {
  UsageSums sums = {};
  std::map<std::uint64_t, LinkedFile> linked;
  for (const auto folder : foldersIn(index)) {
    const auto contents = index.sums(folder);
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
  const auto text = sealed(input);
  auto record = read(text);
  if (!record) return;
  const auto sums = record->index.blocks();
  const auto folders = foldersIn(record->index);
  require(record->index.size() <= input.size(), "folders are not made up");
  require(folders.size() == record->index.size(), "no folder is lost");
  require(sumsOf(record->index) == sums, "what is counted adds up");
  auto written = writtenAgain(*record);
  // Names that are none are given up, those folders are listed anew.
  if (!written) written = writtenAgain(*record);
  require(written.has_value(), "what was read can be written");
  require(record->index.blocks() == sums, "what is counted stays");
  const auto again = read(*written);
  require(again && again->complete == record->complete, "what is written is read again");
  require(again->index.blocks() == sums && again->index.size() == folders.size(),
          "what is read again is the same");
  const auto same = foldersIn(again->index);
  for (std::size_t each = 0; each < folders.size(); ++each)
    require(namesOf(again->index, same[each]) == namesOf(record->index, folders[each]),
            "names come back");
}

/// Keeps the index's names in `kept`.
void keep(UsageIndex& index, std::string& kept) {
  std::string names;
  for (const auto folder : foldersIn(index)) names += namesOf(index, folder);
  std::swap(kept, names);
  index.setKept([&kept](std::uint64_t fromEnd, char* to, std::size_t size) {
    require(fromEnd <= kept.size() && size <= fromEnd, "names are where they were kept");
    return kept.copy(to, size, kept.size() - static_cast<std::size_t>(fromEnd)) == size;
  });
}

/// Changes an index as the input says, three bytes a change.
void change(std::string_view input) {
  std::string kept;
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
      FolderSums sums;
      sums.blocks[byte(0) / 4 % usageKinds] = byte(2);
      for (std::uint64_t inode = 1; inode < byte(2) % 8; ++inode)
        sums.linked.push_back({inode, inode * 8, UsageKind(byte(0) / 4 % usageKinds)});
      const std::string names = std::string(byte(2) * 64u + 1, 'n') + std::string("\0m\0", 3);
      index.setContents(folder, byte(2), sums, NameList(names));
      require(index.sums(folder) == sums, "sums come back");
      if (byte(0) % 4 == 3) {
        sums.blocks[0] = byte(1);
        index.setSums(folder, sums);
        require(index.sums(folder) == sums, "so do others of the same files");
      }
      require(namesOf(index, folder) == names, "names come back");
      if (byte(1) % 16 == 0) keep(index, kept);
    }
    require(sumsOf(index) == index.blocks(), "what is counted adds up");
  }
  require(foldersIn(index).size() == index.size(), "no folder is lost");
  const auto written = writtenAgain(record);
  const auto again = written ? read(*written) : std::nullopt;
  require(again && again->index.blocks() == index.blocks(), "any index is read again");
}

}  // namespace

void consume(std::string_view input) {
  require(!read(input) || input.starts_with("vantile usage 4\n"), "a record is of this version");
  readWhatIsSealed(input);
  change(input.substr(0, 300));
}

}  // namespace vantile::fuzz
