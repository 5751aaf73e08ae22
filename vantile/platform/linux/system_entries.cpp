#include "vantile/platform/linux/system_entries.h"

#include <utility>

#include "vantile/platform/linux/first_line.h"
#include "vantile/platform/linux/folder_entries.h"
#include "vantile/platform/linux/processors.h"
#include "vantile/platform/parsers/firmware_text.h"

namespace vantile {
namespace {

constexpr std::size_t mostOfText = 4096;
constexpr std::size_t mostOfCpuinfo = 16u << 20;  // a kilobyte or two a processor

/// The number of the processor whose folder has that name, "cpu12"; nothing for other folders.
std::optional<std::uint64_t> processorNumber(std::string_view folder) {
  constexpr std::string_view prefix = "cpu";
  const bool isProcessor = folder.starts_with(prefix) && folder.size() > prefix.size() &&
                           folder.find_first_not_of("0123456789", prefix.size()) == folder.npos;
  return isProcessor ? leadingNumber(folder.substr(prefix.size())) : std::nullopt;
}

}  // namespace

LinuxSystemEntries::LinuxSystemEntries(LinuxRoots roots)
    : roots_(std::move(roots)),
      dmi_(roots_.sys + "/class/dmi/id/"),
      deviceTree_(roots_.sys + "/firmware/devicetree/base/"),
      processors_(roots_.sys + "/devices/system/cpu/") {}

std::optional<std::string> LinuxSystemEntries::dmi(const char* field) const {
  const auto text = contentsOf(dmi_ + field, mostOfText);
  return text ? firmwareText(*text) : std::nullopt;
}

std::optional<std::string> LinuxSystemEntries::deviceTree(const char* property) const {
  const auto text = contentsOf(deviceTree_ + property, mostOfText);
  return text ? firmwareText(*text) : std::nullopt;
}

/// Every processor tells which ones share its core, itself included; the first of them stands for
/// the core. Its number alone would not do: on boards it begins anew in each cluster.
std::optional<std::uint64_t> LinuxSystemEntries::coresInTopology() const {
  std::uint64_t cores = 0;
  forEachEntry(processors_, [this, &cores](const dirent& entry) {
    const auto number = processorNumber(entry.d_name);
    if (!number) return;
    const auto topology = processors_ + entry.d_name + "/topology/";
    auto sharing = firstLineOf(topology + "core_cpus_list");
    if (!sharing) sharing = firstLineOf(topology + "thread_siblings_list");  // before Linux 5.3
    if (sharing && leadingNumber(*sharing) == number) ++cores;
  });
  return cores > 0 ? std::optional(cores) : std::nullopt;
}

Cpuinfo LinuxSystemEntries::cpuinfo() const {
  const auto text = contentsOf(roots_.proc + "/cpuinfo", mostOfCpuinfo);
  return text ? parseCpuinfo(*text) : Cpuinfo();
}

std::optional<std::string> LinuxSystemEntries::registryText(std::string_view key) {
  if (key == "IOPlatformUUID") return dmi("product_uuid");
  if (key != "IOPlatformSerialNumber") return std::nullopt;
  auto serial = dmi("product_serial");
  return serial ? serial : deviceTree("serial-number");
}

std::optional<std::string> LinuxSystemEntries::controlText(std::string_view name) {
  if (name == "kern.osrelease") return firstLineOf(roots_.sysctl + "/kernel/osrelease");
  if (name == "kern.osversion") return firstLineOf(roots_.sysctl + "/kernel/version");
  if (name == "machdep.cpu.brand_string") return cpuinfo().modelName;
  if (name != "hw.model") return std::nullopt;
  auto product = dmi("product_name");
  return product ? product : deviceTree("model");
}

std::optional<std::uint64_t> LinuxSystemEntries::controlNumber(std::string_view name) {
  if (name == "hw.cpufrequency") return LinuxProcessors(roots_).frequency();
  if (name != "hw.physicalcpu") return std::nullopt;
  if (const auto cores = coresInTopology()) return cores;
  return cpuinfo().physicalCores;
}

std::shared_ptr<SystemEntries> systemEntries() {
  static auto& entries =
      *new std::shared_ptr<SystemEntries>(std::make_shared<LinuxSystemEntries>());
  return entries;
}

}  // namespace vantile
