#include "vantile/platform/applications.h"

#include "seam.h"

namespace vantile {
namespace {

using ApplicationsSeam = Seam;

bool isApplication(std::string_view name, FileKind kind) {
  return systemApplications()->isApplication(name, kind, [] {
    ADD_FAILURE() << "the contents were asked for";
    return std::nullopt;
  });
}

TEST_F(ApplicationsSeam, AreFoldersWithTheExtensionApp) {
  EXPECT_TRUE(isApplication("Safari.app", FileKind::folder));
  EXPECT_TRUE(isApplication("a.b.app", FileKind::folder));
  EXPECT_FALSE(isApplication("Safari", FileKind::folder));
  EXPECT_FALSE(isApplication("Safari.application", FileKind::folder));
}

TEST_F(ApplicationsSeam, AreNotFilesOrLinksOfSuchAName) {
  EXPECT_FALSE(isApplication("Safari.app", FileKind::regular));
  EXPECT_FALSE(isApplication("Safari.app", FileKind::symbolicLink));
}

TEST_F(ApplicationsSeam, ANameThatIsAllExtensionHasNone) {
  EXPECT_FALSE(isApplication(".app", FileKind::folder));
}

}  // namespace
}  // namespace vantile
