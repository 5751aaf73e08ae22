#include "vantile/platform/posix/account.h"

#include <pwd.h>
#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

namespace vantile {
namespace {

std::string textOf(const char* text) {
  return text ? text : "";
}

}  // namespace

std::optional<Account> ownAccount() {
  std::vector<char> text(1024);
  passwd entry = {};
  passwd* found = nullptr;
  int result = ::getpwuid_r(::getuid(), &entry, text.data(), text.size(), &found);
  // An entry of a directory service may be of any length; beyond a megabyte it is none.
  while (result == ERANGE && text.size() < 1u << 20) {
    text.resize(text.size() * 4);
    result = ::getpwuid_r(::getuid(), &entry, text.data(), text.size(), &found);
  }
  if (result != 0 || !found) return std::nullopt;
  return Account{textOf(entry.pw_name), textOf(entry.pw_gecos), textOf(entry.pw_dir)};
}

std::string homeOfAccount() {
  const auto account = ownAccount();
  std::string home = account ? account->home : "";
  if (!home.starts_with('/')) {
    const char* const named = ::getenv("HOME");
    home = named && named[0] == '/' ? named : "/";
  }
  while (home.size() > 1 && home.ends_with('/')) home.pop_back();
  return home;
}

}  // namespace vantile
