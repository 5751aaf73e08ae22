#include "vantile/platform/parsers/launch_evidence.h"

#include <algorithm>
#include <array>

#include "vantile/platform/parsers/text.h"

namespace vantile {
namespace {

std::optional<int> hexDigit(char digit) {
  if (digit >= '0' && digit <= '9') return digit - '0';
  if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
  return std::nullopt;
}

/// A part of a unit's name with systemd's escapes (`\x2d` and the like) resolved.
std::string withoutUnitEscapes(std::string_view text) {
  std::string plain;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const auto escape = text.substr(at, 4);
    const auto high = escape.size() == 4 ? hexDigit(escape[2]) : std::nullopt;
    const auto low = escape.size() == 4 ? hexDigit(escape[3]) : std::nullopt;
    if (escape.starts_with("\\x") && high && low) {
      plain.push_back(static_cast<char>(*high * 16 + *low));
      at += 3;
    } else {
      plain.push_back(text[at]);
    }
  }
  return plain;
}

/// The name without the ending, or nothing where it has another one.
std::optional<std::string_view> withoutEnding(std::string_view name, std::string_view ending) {
  if (!name.ends_with(ending)) return std::nullopt;
  return name.substr(0, name.size() - ending.size());
}

/// The identifiers that "[launcher-]ID" may mean. A "-" within an identifier is escaped by most
/// launchers, so what stands before the first one is the launcher rather than a part of it.
std::vector<std::string> identifiersIn(std::string_view name) {
  std::vector<std::string> identifiers;
  const auto dash = name.find('-');
  if (dash != std::string_view::npos)
    identifiers.push_back(withoutUnitEscapes(name.substr(dash + 1)));
  identifiers.push_back(withoutUnitEscapes(name));
  std::erase(identifiers, "");
  return identifiers;
}

std::optional<ApplicationUnit> unitNamed(std::string_view name) {
  constexpr std::string_view prefix = "app-";
  if (!name.starts_with(prefix)) return std::nullopt;
  name.remove_prefix(prefix.size());
  ApplicationUnit unit;
  if (const auto scope = withoutEnding(name, ".scope")) {
    const auto random = scope->rfind('-');
    if (random == std::string_view::npos) return std::nullopt;
    unit.identifiers = identifiersIn(scope->substr(0, random));
  } else if (const auto service = withoutEnding(name, ".service")) {
    unit.isService = true;
    unit.identifiers = identifiersIn(service->substr(0, service->find('@')));
  }
  return unit.identifiers.empty() ? std::nullopt : std::optional(unit);
}

/// The next word of a command line, as desktop entries quote them: "..." with backslashes before
/// ", `, $ and \.
std::optional<std::string> takeWord(std::string_view& line) {
  line.remove_prefix(std::min(line.find_first_not_of(" \t\n"), line.size()));
  if (line.empty()) return std::nullopt;
  std::string word;
  bool quoted = false;
  std::size_t at = 0;
  for (; at < line.size(); ++at) {
    const char byte = line[at];
    if (byte == '"') {
      quoted = !quoted;
    } else if (byte == '\\' && at + 1 < line.size()) {
      word.push_back(line[++at]);
    } else if (!quoted && (byte == ' ' || byte == '\t' || byte == '\n')) {
      break;
    } else {
      word.push_back(byte);
    }
  }
  line.remove_prefix(at);
  return word;
}

}  // namespace

std::optional<ApplicationUnit> applicationUnitOf(std::string_view cgroupText) {
  while (!cgroupText.empty()) {
    const auto line = takeLine(cgroupText);  // hierarchy:controllers:path
    const auto first = line.find(':');
    const auto second = first == std::string_view::npos ? first : line.find(':', first + 1);
    if (second == std::string_view::npos) continue;
    // An application may make groups of its own below its unit.
    for (auto path = line.substr(second + 1); path.find('/') != std::string_view::npos;
         path = path.substr(0, path.rfind('/'))) {
      if (auto unit = unitNamed(lastComponent(path))) {
        unit->group = path;
        return unit;
      }
    }
  }
  return std::nullopt;
}

std::optional<DesktopLaunch> desktopLaunchOf(std::string_view environment) {
  constexpr std::string_view entryName = "GIO_LAUNCHED_DESKTOP_FILE=";
  constexpr std::string_view pidName = "GIO_LAUNCHED_DESKTOP_FILE_PID=";
  DesktopLaunch launch;
  while (!environment.empty()) {
    const auto variable = environment.substr(0, environment.find('\0'));
    environment.remove_prefix(std::min(variable.size() + 1, environment.size()));
    if (variable.starts_with(entryName)) {
      launch.entry = variable.substr(entryName.size());
    } else if (variable.starts_with(pidName)) {
      launch.pid = wholeNumber<std::int32_t>(variable.substr(pidName.size())).value_or(0);
    }
  }
  const bool isLaunch = launch.entry.starts_with('/') && launch.pid > 0;
  return isLaunch ? std::optional(std::move(launch)) : std::nullopt;
}

bool runsOthers(std::string_view program) {
  constexpr std::array names = {"ash",      "bash",        "busybox",
                                "bwrap",    "cmd",         "csh",
                                "dash",     "dbus-launch", "dotnet",
                                "electron", "env",         "fish",
                                "flatpak",  "gjs",         "gjs-console",
                                "gksu",     "gtk-launch",  "java",
                                "ksh",      "lua",         "luajit",
                                "mono",     "node",        "nodejs",
                                "perl",     "php",         "pkexec",
                                "pypy",     "python",      "qml",
                                "ruby",     "sh",          "snap",
                                "su",       "sudo",        "tclsh",
                                "wine",     "wish",        "x-terminal-emulator",
                                "xdg-open", "zsh"};
  auto name = lastComponent(program);
  // python3.11 and the like
  name = name.substr(0, name.find_last_not_of("0123456789.-") + 1);
  return std::find(names.begin(), names.end(), name) != names.end();
}

std::optional<std::string> programOf(std::string_view commandLine) {
  auto word = takeWord(commandLine);
  if (word && lastComponent(*word) == "env") {
    do {
      word = takeWord(commandLine);
    } while (word && (word->find('=') != std::string::npos || word->starts_with('-')));
  }
  if (!word || word->empty() || word->ends_with('/') || runsOthers(*word)) return std::nullopt;
  return word;
}

std::string_view executableOf(std::string_view link) {
  return withoutEnding(link, " (deleted)").value_or(link);
}

}  // namespace vantile
