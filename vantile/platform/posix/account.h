#pragma once

#include <optional>
#include <string>

namespace vantile {

/// An entry of the system's accounts. What it does not have is empty.
struct Account {
  std::string name;         ///< to log in by
  std::string information;  ///< about the person, the "GECOS" text
  std::string home;
};

/// The account of the process's real user, or nothing where there is none.
std::optional<Account> ownAccount();

/// The home of the account that the process runs as; for an account without one $HOME, then "/".
/// Absolute and without a "/" at its end.
std::string homeOfAccount();

}  // namespace vantile
