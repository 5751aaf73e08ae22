#pragma once

namespace vantile::testing {

/// As the first argument, it makes the program print the processor's temperature as the sensor
/// functions read it, then, for each pair of a file and a text that follows, write the text into
/// the file and print the temperature again. For a machine that is put before it.
inline constexpr const char* readTemperature = "--read-temperature";
int runSensorHelper(int count, char** arguments);

}  // namespace vantile::testing
