#pragma once

#include <string>

namespace vantile {

/// The home of the account that the process runs as; for an account without one $HOME, then "/".
/// Absolute and without a "/" at its end.
std::string homeOfAccount();

}  // namespace vantile
