#include "vantile/platform/linux/desktop_index.h"

#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "vantile/platform/linux/desktop_entry.h"
#include "vantile/platform/linux/folder_entries.h"
#include "vantile/platform/linux/statx.h"
#include "vantile/platform/parsers/launch_evidence.h"
#include "vantile/platform/parsers/text.h"
#include "vantile/platform/posix/files.h"

namespace vantile {
namespace {

constexpr std::string_view ending = ".desktop";
constexpr int deepest = 8;  // folders that lead in a circle end somewhere
constexpr std::size_t filesLookedAt = 2;
constexpr std::size_t mostFolders = 1000;
constexpr std::size_t mostEntries = 10000;  // any process may claim to be of any file

/// The pieces of a list that are not empty.
std::vector<std::string> piecesOf(std::string_view list) {
  std::vector<std::string> pieces;
  while (!list.empty()) {
    const auto piece = list.substr(0, list.find(':'));
    list.remove_prefix(std::min(piece.size() + 1, list.size()));
    if (!piece.empty()) pieces.emplace_back(piece);
  }
  return pieces;
}

std::optional<std::string> resolved(const std::string& path) {
  const std::unique_ptr<char, decltype(&::free)> real(::realpath(path.c_str(), nullptr), &::free);
  return real ? std::optional<std::string>(real.get()) : std::nullopt;
}

struct Modified {
  std::int64_t seconds = -1, nanoseconds = -1;
};

Modified modificationOf(const std::string& folder) {
  const auto status = statusOf(AT_FDCWD, folder.c_str(), 0, STATX_TYPE | STATX_MTIME);
  if (!status || !S_ISDIR(status->stx_mode)) return {};
  return {status->stx_mtime.tv_sec, status->stx_mtime.tv_nsec};
}

bool isScript(const std::string& path) {
  return contentsOf(path, 2) == "#!";
}

}  // namespace

DesktopIndex::DesktopIndex(std::string home, Environment environment)
    : home_(std::move(home)), environment_(std::move(environment)) {}

std::vector<std::string> DesktopIndex::dataFolders() const {
  const auto named = environment_("XDG_DATA_HOME");
  std::vector<std::string> folders = {named && named->starts_with('/') ? *named
                                                                       : home_ + "/.local/share"};
  const auto list = environment_("XDG_DATA_DIRS");
  for (auto& folder : piecesOf(list && !list->empty() ? *list : "/usr/local/share:/usr/share"))
    if (folder.starts_with('/')) folders.push_back(std::move(folder));
  return folders;
}

bool DesktopIndex::haveChanged() {
  if (sources_.empty() || dataFolders() != sources_) return true;
  for (const Folder& folder : folders_) {
    const auto now = modificationOf(folder.path);
    if (!folder.isSettled || now.seconds != folder.seconds || now.nanoseconds != folder.nanoseconds)
      return true;
  }
  for (std::size_t count = std::min(filesLookedAt, files_.size()); count > 0; --count) {
    const File& file = files_[nextFile_++ % files_.size()];
    if (stampOf(file.path) != file.stamp) return true;
  }
  return false;
}

bool DesktopIndex::refresh() {
  if (!haveChanged()) return false;
  build();
  return true;
}

void DesktopIndex::build() {
  folders_.clear();
  files_.clear();
  entries_.clear();
  byIdentifier_.clear();
  byPath_.clear();
  byProgram_.clear();
  byScriptName_.clear();
  nextFile_ = 0;
  sources_ = dataFolders();
  desktops_ = piecesOf(environment_("XDG_CURRENT_DESKTOP").value_or(""));
  for (const auto& folder : sources_) readFolder(folder + "/applications", "", 0);
}

void DesktopIndex::readFolder(const std::string& path, const std::string& identifierPrefix,
                              int depth) {
  if (folders_.size() >= mostFolders) return;
  const auto modified = modificationOf(path);  // before it is read, so that no change is missed
  folders_.push_back({path, modified.seconds, modified.nanoseconds, isSettled(modified.seconds)});
  std::vector<std::string> names;
  forEachEntry(path, [&names](const dirent& entry) {
    if (entry.d_name[0] != '.') names.emplace_back(entry.d_name);
  });
  std::sort(names.begin(), names.end());  // of entries for one program the first one counts
  for (const auto& name : names) {
    const auto at = path + "/" + name;
    if (name.ends_with(ending)) {
      readEntry(at, identifierPrefix + name.substr(0, name.size() - ending.size()));
    } else if (depth < deepest && modificationOf(at).seconds >= 0) {
      readFolder(at, identifierPrefix + name + "-", depth + 1);
    }
  }
}

void DesktopIndex::readEntry(const std::string& path, const std::string& identifier) {
  if (byIdentifier_.contains(identifier)) return;
  byIdentifier_[identifier] = add(path, true);
}

/// Of what is not installed, only who was launched by it is an application.
std::optional<std::size_t> DesktopIndex::add(const std::string& path, bool isInstalled) {
  files_.push_back({path, stampOf(path)});
  const auto text = contentsOf(path, longestDesktopEntry);
  const auto entry = text ? desktopEntryOf(*text) : std::nullopt;
  if (!entry) return byPath_[path] = std::nullopt;
  const auto number = entries_.size();
  const bool isShown = entry->isShownIn(desktops_);
  std::string fileName(lastComponent(path));
  if (fileName.ends_with(ending)) fileName.resize(fileName.size() - ending.size());
  entries_.push_back({path, entry->name.value_or(fileName), isShown});
  if (isInstalled && isShown && entry->command) addProgram(*entry->command, number);
  return byPath_[path] = number;
}

void DesktopIndex::addProgram(const std::string& command, std::size_t number) {
  const auto program = programOf(command);
  const auto found = program ? findProgram(*program) : std::nullopt;
  // What an entry names may be a link to an interpreter, as alternatives are.
  if (!found || runsOthers(*found)) return;
  if (isScript(*found)) {
    byScriptName_.try_emplace(std::string(lastComponent(*found)), number);
  } else {
    byProgram_.try_emplace(*found, number);
  }
}

std::optional<std::string> DesktopIndex::findProgram(const std::string& program) const {
  if (program.starts_with('/')) return resolved(program);
  if (program.find('/') != std::string::npos) return std::nullopt;
  for (const auto& folder : piecesOf(environment_("PATH").value_or("/usr/local/bin:/usr/bin:/bin")))
    if (::access((folder + "/" + program).c_str(), X_OK) == 0)
      return resolved(folder + "/" + program);
  return std::nullopt;
}

std::optional<std::size_t> DesktopIndex::withIdentifier(const std::string& identifier) const {
  const auto found = byIdentifier_.find(identifier);
  return found == byIdentifier_.end() ? std::nullopt : found->second;
}

std::optional<std::size_t> DesktopIndex::at(const std::string& path) {
  const auto found = byPath_.find(path);
  if (found != byPath_.end()) return found->second;
  return byPath_.size() < mostEntries ? add(path, false) : std::nullopt;
}

std::optional<std::size_t> DesktopIndex::running(std::string_view executable) const {
  const std::string path(executable);
  if (const auto found = byProgram_.find(path); found != byProgram_.end()) return found->second;
  if (runsOthers(executable)) return std::nullopt;
  const auto script = byScriptName_.find(std::string(lastComponent(executable)));
  return script == byScriptName_.end() ? std::nullopt : std::optional(script->second);
}

}  // namespace vantile
