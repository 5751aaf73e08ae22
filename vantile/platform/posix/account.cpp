#include "vantile/platform/posix/account.h"

#include <pwd.h>
#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <vector>

namespace vantile {
namespace {

std::optional<std::string> homeInAccounts() {
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

}  // namespace

std::string homeOfAccount() {
  auto home = homeInAccounts();
  if (!home) {
    const char* const named = ::getenv("HOME");
    home = named && named[0] == '/' ? named : "/";
  }
  while (home->size() > 1 && home->ends_with('/')) home->pop_back();
  return *home;
}

}  // namespace vantile
