#pragma once

#include <array>
#include <memory>
#include <string>
#include <string_view>

namespace vantile {

/// Something that a long run asks for the same again and again, at the end of which it holds no
/// more than at its beginning.
class Soaked {
 public:
  virtual ~Soaked() = default;

  /// Takes a sample, of whatever kind is the next, or makes a change and waits until it is told.
  virtual void turn(long number) = 0;
  /// How often anybody was told of something.
  long told() const { return told_; }

 protected:
  long told_ = 0;
};

/// What is held at one time.
struct Held {
  long blocks = 0, heapBytes = 0, descriptors = 0;
};

struct SoakedKind {
  std::string_view name;
  /// Null, with the reason, where it can't be had here.
  std::unique_ptr<Soaked> (*make)(std::string& refusal);
  long turns = 100000;  ///< of a run, unless another number is asked for
  long warming = 1000;  ///< before it, until everything that is kept has been made
  int seconds = 0;      ///< until what they brought along is over
  /// By which two looks may differ: a block may come to lie in a chunk that is 16 bytes larger.
  Held leeway = {.heapBytes = 1024};
};

std::unique_ptr<Soaked> soakedMemory(std::string& refusal);
std::unique_ptr<Soaked> soakedProcessor(std::string& refusal);
std::unique_ptr<Soaked> soakedNetwork(std::string& refusal);
std::unique_ptr<Soaked> soakedChanges(std::string& refusal);
std::unique_ptr<Soaked> soakedDisk(std::string& refusal);
std::unique_ptr<Soaked> soakedBattery(std::string& refusal);

inline constexpr std::array<SoakedKind, 6> soakedKinds = {{
    {"memory", soakedMemory},
    {"cpu", soakedProcessor},
    // The kernel gives links addresses of its own, when it sees fit.
    {"network", soakedNetwork, 100000, 1000, 4, {.blocks = 16, .heapBytes = 4096}},
    {"changes", soakedChanges, 1000, 80, 4, {.blocks = 16, .heapBytes = 4096}},
    {"disk", soakedDisk},
    {"battery", soakedBattery},
}};

}  // namespace vantile
