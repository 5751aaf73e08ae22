#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "dashboard/canvas.h"
#include "report.h"

namespace vantile::host {

/// Rows that a pane asks for, without its frame.
struct PaneRows {
  int minimum;
  int wanted;
  bool grows;  ///< makes use of more than it wants
};

enum class Sorting { Next, Reverse };

/// A part of the dashboard with a frame and a title. It draws what its monitor last told.
class Pane {
 public:
  virtual ~Pane() = default;
  virtual std::string title() const = 0;
  /// What stands at the right end of the title's line.
  virtual std::string note() const { return {}; }
  virtual PaneRows rows() const = 0;
  /// Draws into a region that may also be smaller than the minimum. `interval` is that of the
  /// samples, in seconds.
  virtual void draw(Region region, std::int32_t interval) const = 0;
  /// Whether it lists things in an order that `sort` changes.
  virtual bool sorts() const { return false; }
  virtual void sort(Sorting) {}
};

/// What one monitor shows: its panes, and how they are told.
struct PaneGroup {
  std::vector<std::unique_ptr<Pane>> panes;
  ReportSink take;
};

}  // namespace vantile::host
