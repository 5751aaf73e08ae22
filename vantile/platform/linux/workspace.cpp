#include "vantile/platform/workspace.h"

namespace vantile {
namespace {

/// File managers watch for themselves, and there is no centre for the desktop's observers.
class SelfSufficientWorkspace final : public Workspace {
 public:
  void noteFileSystemChanged(const std::string&) override {}
  void post(const std::string&, const void*, const std::string&) override {}
};

}  // namespace

std::shared_ptr<Workspace> systemWorkspace() {
  static auto& workspace =
      *new std::shared_ptr<Workspace>(std::make_shared<SelfSufficientWorkspace>());
  return workspace;
}

}  // namespace vantile
