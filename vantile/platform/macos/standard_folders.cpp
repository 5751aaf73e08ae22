#include "vantile/platform/macos/standard_folders.h"

#include "vantile/platform/posix/account.h"

namespace vantile {
namespace {

class MacosFolders final : public StandardFolders {
 public:
  std::string home() override { return home_; }
  std::string downloads() override { return belowHome("Downloads"); }
  std::string library() override { return belowHome("Library"); }
  std::string preferences() override { return belowHome("Library/Preferences"); }
  std::string applications() override { return "/Applications"; }
  std::string trash() override { return belowHome(".Trash"); }
  void makeTrash() override {}

 private:
  std::string belowHome(const char* relative) const {
    return (home_ == "/" ? home_ : home_ + "/") + relative;
  }

  const std::string home_ = homeOfAccount();
};

}  // namespace

std::shared_ptr<StandardFolders> makeStandardFolders() {
  return std::make_shared<MacosFolders>();
}

std::shared_ptr<StandardFolders> systemStandardFolders() {
  static auto& folders = *new std::shared_ptr<StandardFolders>(makeStandardFolders());
  return folders;
}

}  // namespace vantile
