#include "vantile/platform/applications.h"

namespace vantile {
namespace {

class MacosApplications final : public Applications {
 public:
  bool isApplication(std::string_view name, FileKind kind, const Contents&) override {
    constexpr std::string_view ending = ".app";
    // A name that is nothing but ".app" has no extension.
    return kind == FileKind::folder && name.size() > ending.size() && name.ends_with(ending);
  }
};

}  // namespace

std::shared_ptr<Applications> systemApplications() {
  static auto& kinds = *new std::shared_ptr<Applications>(std::make_shared<MacosApplications>());
  return kinds;
}

}  // namespace vantile
