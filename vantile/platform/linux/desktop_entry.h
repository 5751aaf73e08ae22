#pragma once

#include <optional>
#include <string>
#include <vector>

namespace vantile {

/// What a file of the extension "desktop" says of an application.
struct DesktopEntry {
  std::optional<std::string> name;     ///< in the user's language, never empty
  std::optional<std::string> command;  ///< the command line, as it quotes it
  bool isShown = false;                ///< neither hidden nor marked as not to be displayed
  /// Desktops that alone show it, and that do not. Empty for no such list.
  std::vector<std::string> onlyShownIn, notShownIn;

  /// Whether the menus of these desktops, as XDG_CURRENT_DESKTOP lists them, show it.
  bool isShownIn(const std::vector<std::string>& desktops) const;
};

/// How much of such a file is read.
inline constexpr std::size_t longestDesktopEntry = 1u << 20;

/// Nothing where the text is no desktop entry, or one of another type than Application.
std::optional<DesktopEntry> desktopEntryOf(const std::string& text);

/// The name that a desktop entry of whatever type gives itself in the user's language, or nothing.
std::optional<std::string> localizedNameOf(const std::string& text);

}  // namespace vantile
