#pragma once

#include <cstdio>
#include <string>

namespace vantile::testing {

/// What a shell command printed, and how it ended.
struct Output {
  int status = -1;
  std::string text;
};

inline Output run(const std::string& command) {
  Output output;
  FILE* const pipe = ::popen((command + " 2>&1").c_str(), "r");
  if (!pipe) return output;
  char piece[65536];
  while (const auto count = std::fread(piece, 1, sizeof piece, pipe))
    output.text.append(piece, count);
  output.status = ::pclose(pipe);
  return output;
}

/// `text` as one word of a shell command.
inline std::string quoted(const std::string& text) {
  std::string word = "'";
  for (const char each : text) word += each == '\'' ? std::string("'\\''") : std::string(1, each);
  return word + "'";
}

}  // namespace vantile::testing
