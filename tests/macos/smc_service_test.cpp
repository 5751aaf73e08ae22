#include "vantile/platform/smc_service.h"

#include <cstring>

#include "seam.h"

namespace vantile {
namespace {

using Calls = std::vector<std::string>;

class SmcServiceSeam : public Seam {
 protected:
  SmcServiceSeam() { fakes::machine.services = {0x601, 0x602}; }

  const std::shared_ptr<SmcService> service = systemSmcService();
};

TEST_F(SmcServiceSeam, OpensTheFirstServiceAndReleasesWhatLedThere) {
  const auto opening = service->open();
  EXPECT_EQ(opening.matching, 0);
  EXPECT_TRUE(opening.found);
  EXPECT_EQ(opening.opened, 0);
  EXPECT_NE(opening.connection, 0u);
  EXPECT_EQ(fakes::machine.calls,
            (Calls{"match", "next", "release iterator", "open", "release service"}));
  EXPECT_EQ(fakes::live().kernelObjects, 0);
  EXPECT_EQ(service->close(opening.connection), 0);
  EXPECT_EQ(fakes::live().connections, 0);
}

TEST_F(SmcServiceSeam, ARefusedSearchOpensNothing) {
  fakes::machine.matchingResult = 7;
  const auto opening = service->open();
  EXPECT_EQ(opening.matching, 7);
  EXPECT_FALSE(opening.found);
  EXPECT_EQ(fakes::machine.calls, Calls{"match"});
}

TEST_F(SmcServiceSeam, ADictionaryThatCantBeMadeIsARefusedSearch) {
  fakes::machine.refuses = {"IOServiceMatching"};
  EXPECT_NE(service->open().matching, 0);
}

TEST_F(SmcServiceSeam, AMachineWithoutTheServiceHasNone) {
  fakes::machine.services.clear();
  const auto opening = service->open();
  EXPECT_EQ(opening.matching, 0);
  EXPECT_FALSE(opening.found);
  EXPECT_EQ(fakes::machine.calls, (Calls{"match", "next", "release iterator"}));
}

TEST_F(SmcServiceSeam, AServiceThatCantBeOpenedIsReleased) {
  fakes::machine.openResult = -536870207;
  const auto opening = service->open();
  EXPECT_TRUE(opening.found);
  EXPECT_EQ(opening.opened, -536870207);
  EXPECT_EQ(fakes::live().kernelObjects, 0);
}

TEST_F(SmcServiceSeam, ACallCarriesEightyBytesEachWay) {
  const auto connection = service->open().connection;
  SMCRecord in = {}, out = {}, answer = {};
  in.key = 0x54433050;
  in.command = 9;
  answer.dataSize = 2;
  fakes::machine.callOutput.assign(reinterpret_cast<const char*>(&answer), sizeof answer);
  std::size_t size = sizeof out;
  EXPECT_EQ(service->call(connection, 2, in, out, size), 0);
  EXPECT_EQ(fakes::machine.callInput, std::string(reinterpret_cast<const char*>(&in), sizeof in));
  EXPECT_EQ(fakes::machine.callRoom, 80u);
  EXPECT_EQ(size, 80u);
  EXPECT_EQ(out.dataSize, 2u);
  EXPECT_EQ(fakes::machine.calls.back(), "call 2");
  service->close(connection);
}

TEST_F(SmcServiceSeam, ResultsAreTheKernelsOwn) {
  const auto connection = service->open().connection;
  SMCRecord in = {}, out = {};
  std::size_t size = sizeof out;
  fakes::machine.callResult = 12;
  fakes::machine.closeResult = 13;
  EXPECT_EQ(service->call(connection, 2, in, out, size), 12);
  EXPECT_EQ(service->close(connection), 13);
}

}  // namespace
}  // namespace vantile
