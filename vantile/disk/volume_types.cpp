#include "vantile/disk/volume_types.h"

namespace vantile {

Volumes::Types volumeTypes(const Volumes& volumes) {
  Volumes::Types types = {"hfs", "ufs", "msdos", "exfat", "ntfs", "cd9660", "cddafs", "udf"};
  const auto local = volumes.localTypes();
  types.insert(types.end(), local.begin(), local.end());
  return types;
}

}  // namespace vantile
