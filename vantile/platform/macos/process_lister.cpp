#include "vantile/platform/process_lister.h"

#include <utility>

#include "vantile/platform/macos/programs.h"

namespace vantile {
namespace {

class MacosProcessLister final : public ProcessLister {
 public:
  std::optional<ProcessListing> run(const std::string& pids, const std::string& columns) override {
    auto finished = runToEnd("/bin/ps", {"-p", pids, "-o", columns});
    if (!finished) return std::nullopt;
    return ProcessListing{finished->exitStatus, std::move(finished->output)};
  }
};

}  // namespace

std::shared_ptr<ProcessLister> systemProcessLister() {
  static auto& lister = *new std::shared_ptr<ProcessLister>(std::make_shared<MacosProcessLister>());
  return lister;
}

}  // namespace vantile
