#pragma once

#include <memory>
#include <optional>

#include "dashboard/canvas.h"

namespace vantile::host {

enum class KeyPress { Quit, NextPage, PreviousPage, Sort, ReverseSort, Redraw, Other };

/// The terminal in full-screen use. Given back when this goes and, should that not come to pass,
/// when the process exits, terminates or is ended by a signal that can be caught.
class Terminal {
 public:
  /// Null when the terminal cannot move its cursor or is not known.
  static std::unique_ptr<Terminal> open();
  virtual ~Terminal() = default;

  virtual Size size() const = 0;
  /// Asks the system for the size anew; the next `show` draws everything.
  virtual void resize() = 0;
  virtual void show(const Canvas& canvas) = 0;
  /// The next key that was pressed; nothing when none waits.
  virtual std::optional<KeyPress> key() = 0;
};

}  // namespace vantile::host
