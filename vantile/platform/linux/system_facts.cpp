#include "vantile/platform/linux/system_facts.h"

#include <sys/sysinfo.h>

#include <utility>

#include "vantile/platform/linux/first_line.h"
#include "vantile/platform/parsers/gecos.h"
#include "vantile/platform/parsers/os_release.h"
#include "vantile/platform/parsers/shell_assignments.h"
#include "vantile/platform/posix/files.h"

namespace vantile {
namespace {

constexpr std::size_t mostOfFile = 64 * 1024;

std::optional<std::string> unlessEmpty(std::optional<std::string> text) {
  return text && !text->empty() ? std::move(text) : std::nullopt;
}

}  // namespace

LinuxSystemFacts::LinuxSystemFacts(const LinuxRoots& roots, DistributionFolders folders,
                                   FindAccount findAccount)
    : kernel_(roots.sysctl + "/kernel/"),
      folders_(std::move(folders)),
      findAccount_(std::move(findAccount)) {}

std::optional<std::string> LinuxSystemFacts::computerName() {
  const auto text = contentsOf(folders_.settings + "/machine-info", mostOfFile);
  auto pretty = unlessEmpty(text ? shellAssignment(*text, "PRETTY_HOSTNAME") : std::nullopt);
  return pretty ? pretty : hostName();
}

std::optional<std::string> LinuxSystemFacts::hostName() {
  auto name = firstLineOf(kernel_ + "hostname");
  return name != "(none)" ? name : std::nullopt;  // as long as nobody has set one
}

std::optional<std::string> LinuxSystemFacts::userName() {
  const auto account = findAccount_();
  return account ? unlessEmpty(account->name) : std::nullopt;
}

std::optional<std::string> LinuxSystemFacts::fullUserName() {
  const auto account = findAccount_();
  if (!account) return std::nullopt;
  auto full = fullNameIn(account->information, account->name);
  return full ? full : unlessEmpty(account->name);
}

std::optional<std::uint64_t> LinuxSystemFacts::physicalMemory() {
  struct sysinfo info = {};
  if (::sysinfo(&info) != 0) return std::nullopt;
  return std::uint64_t{info.totalram} * info.mem_unit;
}

std::optional<std::string> LinuxSystemFacts::versionText() {
  auto text = contentsOf(folders_.settings + "/os-release", mostOfFile);
  if (!text) text = contentsOf(folders_.vendor + "/os-release", mostOfFile);
  auto distribution = text ? distributionVersion(*text) : std::nullopt;
  if (distribution) return distribution;
  auto kernel = firstLineOf(kernel_ + "ostype");
  const auto release = firstLineOf(kernel_ + "osrelease");
  if (!kernel || !release) return std::nullopt;
  return *kernel + " " + *release;
}

std::shared_ptr<SystemFacts> systemFacts() {
  static auto& facts = *new std::shared_ptr<SystemFacts>(std::make_shared<LinuxSystemFacts>());
  return facts;
}

}  // namespace vantile
