#include "vantile/platform/parsers/os_release.h"

#include "vantile/platform/parsers/shell_assignments.h"

namespace vantile {

std::optional<std::string> distributionVersion(std::string_view text) {
  auto pretty = shellAssignment(text, "PRETTY_NAME");
  if (pretty && !pretty->empty()) return pretty;
  auto name = shellAssignment(text, "NAME");
  if (!name || name->empty()) return std::nullopt;
  const auto version = shellAssignment(text, "VERSION_ID");
  if (version && !version->empty()) name->append(" ").append(*version);
  return name;
}

}  // namespace vantile
