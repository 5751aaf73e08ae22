#include "vantile/platform/linux/desktop_index.h"

#include <sys/stat.h>

#include <array>

#include "vantile/platform/linux/desktop_entry.h"

#include "fakes/temporary_folder.h"
#include "fuzz/fuzzer.h"

namespace vantile::fuzz {
namespace {

constexpr std::size_t programs = 3;
constexpr std::array<const char*, 4> entries = {
    "home/applications/one.desktop", "home/applications/more/two.desktop",
    "data/applications/one.desktop", "data/applications/three.desktop"};
constexpr std::array<const char*, 4> identifiers = {"one", "more-two", "one", "three"};

/// Two data folders and a folder of programs: a binary, a script, and one that runs others.
class InstalledEntries {
 public:
  InstalledEntries() {
    for (std::size_t at = 0; at < programs; ++at) {
      const auto program = folder_.file(names[at], at == 1 ? "#!/bin/sh\n"
                                                           : "\x7F"
                                                             "ELF");
      ::chmod(program.c_str(), 0755);
    }
  }

  /// Writes one piece of the input into each entry; those without one are missing.
  void write(const std::vector<std::string_view>& texts) const {
    for (std::size_t at = 0; at < entries.size(); ++at) {
      folder_.remove(entries[at]);
      if (at < texts.size()) folder_.file(entries[at], texts[at]);
    }
  }

  std::string path(std::string_view relative) const { return folder_.path(relative); }

  std::optional<std::string> variable(std::string_view name) const {
    if (name == "XDG_DATA_HOME") return folder_.path("home");
    if (name == "XDG_DATA_DIRS") return folder_.path("data");
    if (name == "XDG_CURRENT_DESKTOP") return "GNOME:Other";
    if (name == "PATH") return folder_.path("bin");
    return std::nullopt;
  }

  static constexpr std::array<const char*, programs> names = {"bin/mail", "bin/tool",
                                                              "bin/python3"};

 private:
  const testing::TemporaryFolder folder_{"/dev/shm"};
};

void checkEntries(DesktopIndex& index, const InstalledEntries& installed,
                  const std::vector<std::string_view>& texts) {
  for (std::size_t at = 0; at < entries.size(); ++at) {
    const bool isThere = at < texts.size();
    const auto text = isThere ? std::string(texts[at]) : std::string();
    const auto entry = isThere ? desktopEntryOf(text) : std::nullopt;
    const auto number = index.withIdentifier(identifiers[at]);
    require(!number || *number < index.size(), "an identifier leads to an entry");
    const auto path = installed.path(entries[at]);
    if (at != 2) {  // the third is hidden by the first, where there is that
      require(number.has_value() == entry.has_value() || (at == 0 && !isThere),
              "what is installed is found by its identifier");
      require(!entry || index[*number].path == path, "an identifier is its file's");
    } else if (texts.size() > 2) {
      require(!number || index[*number].path == installed.path(entries[0]),
              "an earlier folder hides the later one's, unreadable or not");
    }
    const auto byPath = index.at(path);
    require(byPath.has_value() == entry.has_value(), "a file is found by its path");
    if (byPath && entry->name) require(index[*byPath].name == *entry->name, "a name is its own");
    if (byPath) require(!index[*byPath].name.empty(), "an entry has a name");
  }
}

void checkPrograms(const DesktopIndex& index, const InstalledEntries& installed) {
  for (const auto* const name : InstalledEntries::names) {
    const auto found = index.running(installed.path(name));
    if (!found) continue;
    require(*found < index.size() && index[*found].isShown, "a program's entry is in the menus");
    require(std::string_view(name) != "bin/python3", "what runs others is nobody's program");
  }
  const auto script = index.running("/elsewhere/tool");
  require(script == index.running(installed.path("bin/tool")),
          "a script's name stands for its program elsewhere");
}

}  // namespace

void consume(std::string_view input) {
  static const InstalledEntries installed;
  auto texts = split(input, '\0');
  texts.resize(std::min(texts.size(), entries.size()));
  installed.write(texts);
  DesktopIndex index(installed.path("none"),
                     [](const char* name) { return installed.variable(name); });
  require(index.refresh(), "the first look builds the index");
  checkEntries(index, installed, texts);
  checkPrograms(index, installed);
}

}  // namespace vantile::fuzz
