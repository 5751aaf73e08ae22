#include <cstddef>
#include <cstdint>

#include "fuzz/fuzzer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  vantile::fuzz::consume({reinterpret_cast<const char*>(data), size});
  return 0;
}
