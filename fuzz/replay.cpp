// vantile_fuzz_replay NAME FOLDER: gives a fuzzer each file of the folder, by name.

#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "fuzz/fuzzer.h"

namespace vantile::fuzz {

#define FUZZER(name) void consume_##name(std::string_view input);
#include "fuzzers.inc"
#undef FUZZER

namespace {

struct Fuzzer {
  std::string_view name;
  void (*consume)(std::string_view input);
};

#define FUZZER(name) {#name, consume_##name},
constexpr Fuzzer fuzzers[] = {
#include "fuzzers.inc"
};
#undef FUZZER

int replay(const Fuzzer& fuzzer, const char* folder) {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) files.push_back(entry);
  std::sort(files.begin(), files.end());
  for (const auto& path : files) {
    std::fprintf(stderr, "%s\n", path.filename().c_str());  // the last one, should it end here
    std::ifstream file(path, std::ios::binary);
    const std::string text(std::istreambuf_iterator<char>(file), {});
    const auto exact = std::make_unique<char[]>(text.size());
    std::copy(text.begin(), text.end(), exact.get());
    fuzzer.consume({exact.get(), text.size()});
  }
  return files.empty() ? 1 : 0;
}

}  // namespace
}  // namespace vantile::fuzz

int main(int count, char** arguments) {
  using namespace vantile::fuzz;
  if (count != 3) return 2;
  try {
    for (const auto& fuzzer : fuzzers)
      if (fuzzer.name == arguments[1]) return replay(fuzzer, arguments[2]);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
  }
  return 2;
}
