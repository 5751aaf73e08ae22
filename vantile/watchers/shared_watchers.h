#pragma once

#include "vantile/foundation/shared_instance.h"

namespace vantile {

class WatchDownload;
class WatchApplication;
class WatchTrash;

/// What the classes' `singleton` gives. Here for tests, which begin without one or bring their own.
SharedInstance<WatchDownload>& sharedDownloadWatch();
SharedInstance<WatchApplication>& sharedApplicationWatch();
SharedInstance<WatchTrash>& sharedTrashWatch();

}  // namespace vantile
