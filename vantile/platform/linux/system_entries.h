#pragma once

#include <string>

#include "vantile/platform/linux/roots.h"
#include "vantile/platform/parsers/cpuinfo.h"
#include "vantile/platform/system_entries.h"

namespace vantile {

/// Entries from the DMI table, the device tree and the kernel's texts, read anew at each question.
class LinuxSystemEntries final : public SystemEntries {
 public:
  explicit LinuxSystemEntries(LinuxRoots roots = {});

  std::optional<std::string> registryText(std::string_view key) override;
  std::optional<std::string> controlText(std::string_view name) override;
  std::optional<std::uint64_t> controlNumber(std::string_view name) override;

 private:
  std::optional<std::string> dmi(const char* field) const;
  std::optional<std::string> deviceTree(const char* property) const;
  Cpuinfo cpuinfo() const;
  std::optional<std::uint64_t> coresInTopology() const;

  const LinuxRoots roots_;
  const std::string dmi_, deviceTree_, processors_;
};

}  // namespace vantile
