#pragma once

#include <memory>
#include <string>

#include "vantile/foundation/api.h"
#include "vantile/foundation/value.h"

namespace vantile {

/// Property-list files, in each of their forms that the system reads. Any thread.
class PropertyLists {
 public:
  virtual ~PropertyLists() = default;

  /// The dictionary that the file at `path` holds; null when there is no such file, it holds
  /// something else, or is malformed. Integers come as signed 64-bit numbers, or unsigned where
  /// they need to be; data is left out.
  /// macOS: CFPropertyListCreateWithData. Linux: libplist.
  virtual std::shared_ptr<Dictionary> read(const std::string& path) = 0;
};

/// The system's property lists, shared by the process.
VANTILE_API std::shared_ptr<PropertyLists> systemPropertyLists();

}  // namespace vantile
