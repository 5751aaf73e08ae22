#include "vantile/platform/system_version.h"

#include "seam.h"

namespace vantile {
namespace {

using SystemVersionSeam = Seam;

TEST_F(SystemVersionSeam, IsTheProductsOwn) {
  fakes::machine.sysctlValues["kern.osproductversion"] = std::string("14.5\0", 5);
  EXPECT_EQ(systemVersion()->version(), "14.5");
}

TEST_F(SystemVersionSeam, IsReadWithoutATerminatorToo) {
  fakes::machine.sysctlValues["kern.osproductversion"] = "11.0";
  EXPECT_EQ(systemVersion()->version(), "11.0");
}

TEST_F(SystemVersionSeam, IsUnknownWhereTheKernelDoesNotTell) {
  EXPECT_FALSE(systemVersion()->version());
}

TEST_F(SystemVersionSeam, IsUnknownWhereItIsNotAVersion) {
  fakes::machine.sysctlValues["kern.osproductversion"] = std::string(1000, '1');
  EXPECT_FALSE(systemVersion()->version());
}

}  // namespace
}  // namespace vantile
