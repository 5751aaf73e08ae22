#pragma once

namespace vantile::testing {

/// The argument that makes this executable the process whose memory group is cleaned, followed by
/// the group's folder and a file to read into its cache.
inline constexpr const char* cleanInGroup = "--clean-in-group";

int runCleanerHelper(const char* groupFolder, const char* file);

}  // namespace vantile::testing
