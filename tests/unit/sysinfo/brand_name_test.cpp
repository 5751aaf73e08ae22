#include <gtest/gtest.h>

#include "vantile/sysinfo/system_info.h"

#include "fakes/fake_system_info_ports.h"

namespace vantile {
namespace {

struct BrandName : ::testing::Test {
  KVDSystemInfo::Text parsed(const KVDSystemInfo::Text& brand) {
    return info->_parseBrandName(brand);
  }

  testing::FakeSystemInfoPorts ports;
  const std::shared_ptr<KVDSystemInfo> info = KVDSystemInfo::init();
};

TEST_F(BrandName, NilGivesNil) {
  EXPECT_EQ(parsed(std::nullopt), std::nullopt);
}

TEST_F(BrandName, OfAnI7LosesItsMarksItsNumberAndWhatFollowsCpu) {
  EXPECT_EQ(parsed("Intel(R) Core(TM) i7-4770 CPU @ 3.40GHz"), "Intel Core i7");
}

TEST_F(BrandName, OfAXeonEndsBeforeItsModel) {
  EXPECT_EQ(parsed("Intel(R) Xeon(R) CPU E5-1650 @ 3.50GHz"), "Intel Xeon");
}

TEST_F(BrandName, WithoutCpuKeepsEveryPieceThatQualifies) {
  EXPECT_EQ(parsed("AMD Ryzen 7 5800X 8-Core Processor @ x3"), "AMD Ryzen Core Processor x3");
  EXPECT_EQ(parsed("Apple M1 Pro"), "Apple M1 Pro");
}

TEST_F(BrandName, CpuEndsItInCapitalsAndAsAWholePieceOnly) {
  EXPECT_EQ(parsed("a CPU b CPU c"), "a");
  EXPECT_EQ(parsed("a cpu b"), "a cpu b");
  EXPECT_EQ(parsed("a CPUs xCPU b"), "a CPUs xCPU b");
}

TEST_F(BrandName, MarksAreDroppedInWhateverCase) {
  EXPECT_EQ(parsed("a R r TM tm Tm tM b"), "a b");
  EXPECT_EQ(parsed("Rx rtm TMs mt"), "Rx rtm TMs mt");
}

TEST_F(BrandName, APieceThatBeginsWithADigitIsDropped) {
  EXPECT_EQ(parsed("a 0b 9 b0 5"), "a b0");
}

TEST_F(BrandName, DigitsOfOtherScriptsAreNone) {
  EXPECT_EQ(parsed("a \u0663x"), "a \u0663x");
}

TEST_F(BrandName, SeparatorsInARowLeaveSingleSpaces) {
  EXPECT_EQ(parsed("  Intel  (R)--Atom@@  "), "Intel Atom");
}

TEST_F(BrandName, IsEmptyWhereNothingIsKept) {
  EXPECT_EQ(parsed(""), "");
  EXPECT_EQ(parsed("CPU Intel"), "");
  EXPECT_EQ(parsed("(R) (TM) 4770 @"), "");
}

TEST_F(BrandName, KeepsBytesThatAreNotUtf8) {
  EXPECT_EQ(parsed("In\xFFtel CPU"), "In\xFFtel");
}

TEST_F(BrandName, OfAProcessorWithAnEmptyBrandIsEmptyNotNil) {
  ports.entries->texts["machdep.cpu.brand_string"] = std::string(1, '\0');
  EXPECT_EQ(KVDSystemInfo::init()->sysProcessorName(), "");
}

}  // namespace
}  // namespace vantile
