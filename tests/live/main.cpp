#include <gtest/gtest.h>
#include <stdlib.h>

#include <string_view>

#ifdef __linux__
#include "fakes/temporary_folder.h"
#include "live/application_helper.h"
#include "live/battery_helper.h"
#include "live/cleaner_helper.h"
#include "live/counted_queries.h"
#include "live/label_helper.h"
#include "live/sensor_helper.h"
#endif

int main(int count, char** arguments) {
#ifdef __linux__
  using namespace vantile::testing;
  if (count == 4 && std::string_view(arguments[1]) == cleanInGroup)
    return runCleanerHelper(arguments[2], arguments[3]);
  if (count >= 2 && std::string_view(arguments[1]) == readTemperature)
    return runSensorHelper(count - 2, arguments + 2);
  if (count == 3 && std::string_view(arguments[1]) == tellBattery)
    return runBatteryHelper(arguments[2]);
  if (count == 4 && std::string_view(arguments[1]) == beApplication)
    return runApplication(arguments[2], arguments[3]);
  if (count == 2 && std::string_view(arguments[1]) == countQueries) runCountedQueries();
  if (count == 4 && std::string_view(arguments[1]) == printLabel)
    return runLabelHelper(arguments[2], arguments[3]);
#endif
  ::testing::InitGoogleTest(&count, arguments);
#ifdef __linux__
  const TemporaryFolder caches;  // what is counted of volumes is not kept for the user
  ::setenv("XDG_CACHE_HOME", caches.path().c_str(), 1);
#endif
  return RUN_ALL_TESTS();
}
