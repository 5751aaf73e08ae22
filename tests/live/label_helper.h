#pragma once

namespace vantile::testing {

/// As the first argument, it makes the program print the label of the volume on the block device of
/// the two numbers that follow, or nothing. For a machine that is put before it.
inline constexpr const char* printLabel = "--print-label";
int runLabelHelper(const char* major, const char* minor);

}  // namespace vantile::testing
