#include "vantile/platform/macos/standard_folders.h"

#include <pwd.h>
#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <vector>

namespace vantile {
namespace {

std::optional<std::string> accountHome() {
  std::vector<char> text(1024);
  passwd entry = {};
  passwd* found = nullptr;
  int result = ::getpwuid_r(::getuid(), &entry, text.data(), text.size(), &found);
  // An entry of a directory service may be of any length; beyond a megabyte it is none.
  while (result == ERANGE && text.size() < 1u << 20) {
    text.resize(text.size() * 4);
    result = ::getpwuid_r(::getuid(), &entry, text.data(), text.size(), &found);
  }
  if (result != 0 || !found || !entry.pw_dir || entry.pw_dir[0] != '/') return std::nullopt;
  return entry.pw_dir;
}

std::string homeOfUser() {
  auto home = accountHome();
  if (!home) {
    const char* const named = ::getenv("HOME");
    home = named && named[0] == '/' ? named : "/";
  }
  while (home->size() > 1 && home->ends_with('/')) home->pop_back();
  return *home;
}

class MacosFolders final : public StandardFolders {
 public:
  std::string home() override { return home_; }
  std::string downloads() override { return belowHome("Downloads"); }
  std::string library() override { return belowHome("Library"); }
  std::string preferences() override { return belowHome("Library/Preferences"); }
  std::string applications() override { return "/Applications"; }
  std::string trash() override { return belowHome(".Trash"); }

 private:
  std::string belowHome(const char* relative) const {
    return (home_ == "/" ? home_ : home_ + "/") + relative;
  }

  const std::string home_ = homeOfUser();
};

}  // namespace

std::shared_ptr<StandardFolders> makeStandardFolders() {
  return std::make_shared<MacosFolders>();
}

std::shared_ptr<StandardFolders> systemStandardFolders() {
  static auto& folders = *new std::shared_ptr<StandardFolders>(makeStandardFolders());
  return folders;
}

}  // namespace vantile
