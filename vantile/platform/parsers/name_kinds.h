#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantile {

/// The kinds of files whose space is counted, the one that goes before the others first.
enum class UsageKind : std::uint8_t { applications, movies, audio, photos };
constexpr std::size_t usageKinds = 4;

/// Of each kind, in its order.
using UsageSums = std::array<std::uint64_t, usageKinds>;

/// The kind of what the shared MIME database calls `type`, such as "video/mp4".
std::optional<UsageKind> kindOfType(std::string_view type);

/// What of a file's name decides on its type: its last extension with the dot, and with the one
/// before it where the last is a compression's; the whole name where it is short, since the
/// database has types for names such as 001.vdr. Nothing for a name without an extension.
std::optional<std::string_view> typeKeyOf(std::string_view name);

/// Whether the name is that of an application in one file.
bool isAppImage(std::string_view name);

/// What installed applications have to do with a folder.
enum class Installed : std::uint8_t { none, below, here };

/// The folders that applications are installed in.
class InstalledFolders {
 public:
  /// Paths are absolute; others are left out.
  explicit InstalledFolders(const std::vector<std::string>& paths);

  /// `here` for such a folder and those below, `below` where one is farther down.
  Installed at(std::string_view path) const;

 private:
  std::vector<std::string> paths_;  // each with a "/" at its end
};

}  // namespace vantile
