#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "dashboard/history.h"
#include "dashboard/pane.h"
#include "report.h"

namespace vantile::host {

/// What the memory monitor told so far.
class MemoryFigures {
 public:
  using Moment = std::chrono::steady_clock::time_point;

  /// Takes in one report that came at `now`.
  void take(const Report& report, Moment now);
  void takeSwap(const Dictionary& swap);

  bool known() const { return total > 0; }
  double share(std::uint64_t bytes) const;

  std::uint64_t total = 0, free = 0, used = 0, active = 0, inactive = 0, wired = 0;
  std::uint64_t freePages = 0, compressed = 0, uncompressed = 0;  // all in bytes
  History usedShare;

  struct Paging {
    std::uint64_t sinceBoot = 0;
    History perSecond;
  };
  Paging pageIns, pageOuts;
  std::optional<double> faultsPerSecond, compressionsPerSecond, decompressionsPerSecond;

  struct Swap {
    std::string path;
    std::uint64_t files = 0, peakFiles = 0, size = 0, used = 0;
    bool encrypted = false;
  };
  std::optional<Swap> swap;

 private:
  struct Counter {
    std::optional<std::uint64_t> last;
    std::optional<double> advance(std::optional<std::uint64_t> now, double seconds);
  };

  void takeMemory(const Dictionary& memory);
  void takePaging(const Dictionary& vm, Moment now);

  std::optional<Moment> lastSample_;
  Counter faults_, compressions_, decompressions_;
};

/// A pane that draws the memory figures.
class MemoryFiguresPane : public Pane {
 public:
  explicit MemoryFiguresPane(std::shared_ptr<const MemoryFigures> figures)
      : figures_(std::move(figures)) {}

 protected:
  const MemoryFigures& figures() const { return *figures_; }

 private:
  std::shared_ptr<const MemoryFigures> figures_;
};

/// Where the memory is, as bars.
class MemoryPane final : public MemoryFiguresPane {
 public:
  using MemoryFiguresPane::MemoryFiguresPane;
  std::string title() const override { return "Memory"; }
  std::string note() const override;
  PaneRows rows() const override { return {6, 7, false}; }
  void draw(Region region, std::int32_t interval) const override;
};

/// How much of the memory was in use lately.
class MemoryHistoryPane final : public MemoryFiguresPane {
 public:
  using MemoryFiguresPane::MemoryFiguresPane;
  std::string title() const override { return "Memory used"; }
  std::string note() const override;
  PaneRows rows() const override { return {2, 5, true}; }
  void draw(Region region, std::int32_t interval) const override;
};

/// How fast pages come in and go out.
class PagingPane final : public MemoryFiguresPane {
 public:
  using MemoryFiguresPane::MemoryFiguresPane;
  std::string title() const override { return "Paging"; }
  std::string note() const override;
  PaneRows rows() const override { return {2, 2, true}; }
  void draw(Region region, std::int32_t interval) const override;
};

/// The swap files.
class SwapPane final : public MemoryFiguresPane {
 public:
  using MemoryFiguresPane::MemoryFiguresPane;
  std::string title() const override { return "Swap"; }
  std::string note() const override;
  PaneRows rows() const override { return {1, 1, false}; }
  void draw(Region region, std::int32_t interval) const override;
};

}  // namespace vantile::host
