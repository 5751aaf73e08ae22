#include "vantile/sysinfo/system_info.h"

#include <algorithm>
#include <string_view>

#include "vantile/platform/parsers/text.h"
#include "vantile/sysinfo/system_info_ports.h"
#include "vantile/utility/strings.h"

namespace vantile {
namespace {

/// Whether `piece` is `word`, which is in lower case, in whatever case. No character beyond ASCII
/// is an "r", a "t" or an "m" in lower case.
bool isInAnyCase(std::string_view piece, std::string_view word) {
  return std::equal(piece.begin(), piece.end(), word.begin(), word.end(),
                    [](char byte, char low) { return asciiLowered(byte) == low; });
}

bool isKept(std::string_view piece) {
  if (piece.empty() || isInAnyCase(piece, "r") || isInAnyCase(piece, "tm")) return false;
  return piece[0] < '0' || piece[0] > '9';
}

}  // namespace

KVDSystemInfo::KVDSystemInfo(SystemInfoPorts ports)
    : ports_(std::make_unique<const SystemInfoPorts>(std::move(ports))) {}

KVDSystemInfo::~KVDSystemInfo() = default;

std::shared_ptr<KVDSystemInfo> KVDSystemInfo::init() {
  const std::shared_ptr<KVDSystemInfo> info(new KVDSystemInfo(SystemInfoPorts::installed()));
  info->setupSystemInformation();
  return info;
}

void KVDSystemInfo::setupSystemInformation() {
  SystemFacts& facts = *ports_->facts;
  setComputerName(queryComputerName());
  setSysName(facts.hostName());
  setSysUserName(facts.userName());
  setSysFullUserName(facts.fullUserName());
  setSysOSName(facts.operatingSystem());
  setSysOSVersion(getOSVersionInfo());
  setSysPhysicalMemory(facts.physicalMemory().value_or(0));
  setSysSerialNumber(_strIORegistryEntry("IOPlatformSerialNumber"));
  setSysUUID(_strIORegistryEntry("IOPlatformUUID"));
  setSysModelID(_strControlEntry("hw.model"));
  setSysProcessorName(_parseBrandName(_strControlEntry("machdep.cpu.brand_string")));
  setSysProcessorSpeed(_numControlEntry("hw.cpufrequency"));
  setSysProcessorCount(_numControlEntry("hw.physicalcpu"));
}

KVDSystemInfo::Text KVDSystemInfo::queryComputerName() const {
  return ports_->facts->computerName();
}

KVDSystemInfo::Text KVDSystemInfo::_strIORegistryEntry(const std::string& key) const {
  return ports_->entries->registryText(key);
}

KVDSystemInfo::Text KVDSystemInfo::_strControlEntry(const std::string& name) const {
  auto text = ports_->entries->controlText(name);
  if (text) text->resize(std::min(text->find('\0'), text->size()));
  return text;
}

KVDSystemInfo::Number KVDSystemInfo::_numControlEntry(const std::string& name) const {
  return ports_->entries->controlNumber(name);
}

KVDSystemInfo::Text KVDSystemInfo::_parseBrandName(const Text& brand) const {
  if (!brand) return std::nullopt;
  std::string name;
  for (const auto& piece : ports_->text->alphanumericPieces(*brand)) {
    if (piece == "CPU") break;
    if (!isKept(piece)) continue;
    if (!name.empty()) name.push_back(' ');
    name += piece;
  }
  return name;
}

KVDSystemInfo::Text KVDSystemInfo::getOSVersionInfo() const {
  if (auto text = ports_->facts->versionText()) return text;
  const auto release = _strControlEntry("kern.osrelease");
  const auto build = _strControlEntry("kern.osversion");
  if (!release || !build) return std::nullopt;
  const auto pieces = ports_->text->piecesBetweenPunctuation(*release);
  if (pieces.size() < 2) return std::nullopt;  // nothing for the third number
  // 32 bits of it are printed, whatever is left over.
  const auto minor = static_cast<std::int32_t>(std::int64_t{intValue(pieces[0])} - 4);
  return "10." + std::to_string(minor) + "." + pieces[1] + " (" + *build + ")";
}

}  // namespace vantile
