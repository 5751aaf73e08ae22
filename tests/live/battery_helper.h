#pragma once

namespace vantile::testing {

/// As the first argument, it makes the program put devices of its own before itself, change them as
/// the story of that name goes, and print what a battery monitor tells. To be run under
/// umockdev-wrapper.
inline constexpr const char* tellBattery = "--tell-battery";
int runBatteryHelper(const char* story);

}  // namespace vantile::testing
