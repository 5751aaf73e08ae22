#include "vantile/platform/interface_facts.h"

#include "seam.h"

namespace vantile {
namespace {

using Calls = std::vector<std::string>;

class InterfaceFactsSeam : public Seam {
 protected:
  InterfaceFactsSeam() {
    fakes::machine.namedServices = {{"en0", 0x701}};
    fakes::machine.registry["IOLinkSpeed"] = {std::int64_t{2'500'000'000}};
  }
  static std::optional<std::uint64_t> speed(std::string_view name) {
    return systemInterfaceFacts()->linkSpeed(name);
  }
};

TEST_F(InterfaceFactsSeam, ALinksSpeedIsItsParents) {
  EXPECT_EQ(speed("en0"), 2'500'000'000u);
  EXPECT_EQ(fakes::machine.calls, (Calls{"match", "next", "parent", "property", "release service",
                                         "release service", "release iterator"}));
}

TEST_F(InterfaceFactsSeam, AnUnknownNameHasNone) {
  EXPECT_EQ(speed("en9"), std::nullopt);
  EXPECT_EQ(fakes::machine.calls, (Calls{"match", "next", "release iterator"}));
}

TEST_F(InterfaceFactsSeam, ARefusedSearchHasNone) {
  fakes::machine.matchingResult = 7;
  EXPECT_EQ(speed("en0"), std::nullopt);
  fakes::machine.matchingResult = 0;
  fakes::machine.refuses = {"IOBSDNameMatching"};
  EXPECT_EQ(speed("en0"), std::nullopt);
}

TEST_F(InterfaceFactsSeam, AServiceWithoutAParentHasNone) {
  fakes::machine.hasParent = false;
  EXPECT_EQ(speed("en0"), std::nullopt);
  EXPECT_EQ(fakes::machine.calls,
            (Calls{"match", "next", "parent", "release service", "release iterator"}));
}

TEST_F(InterfaceFactsSeam, AParentWithoutANumberHasNone) {
  fakes::machine.registry.clear();
  EXPECT_EQ(speed("en0"), std::nullopt);
  fakes::machine.registry["IOLinkSpeed"] = {u"fast"};
  EXPECT_EQ(speed("en0"), std::nullopt);
  fakes::machine.registry["IOLinkSpeed"] = {std::int64_t{-1}};
  EXPECT_EQ(speed("en0"), std::nullopt);
}

TEST_F(InterfaceFactsSeam, NoOtherNamesAreEthernet) {
  EXPECT_EQ(systemInterfaceFacts()->isEthernetDevice("en0"), false);
  EXPECT_EQ(systemInterfaceFacts()->isEthernetDevice("fw0"), false);
}

}  // namespace
}  // namespace vantile
