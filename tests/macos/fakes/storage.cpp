// The mount table, the volume catalogue, the metadata of volumes, and what the desktop tells of
// them.

#include <CoreServices/CoreServices.h>
#include <sys/mount.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "fakes/objects.h"

using fakes::machine;

struct __MDItem : fakes::Counted {
  std::string path;
};

namespace {

constexpr SInt16 notFound = -43;
constexpr SInt16 firstVolume = -100;  // as real ones, below 0

struct Picture : fakes::Counted {};

std::string textOf(const void* string) {
  return *fakes::utf8Of(dynamic_cast<const __CFString&>(*fakes::objectOf(string)).text);
}

const void* autoreleased(fakes::Object* object) {
  fakes::autorelease(object);
  return object;
}

void copy(char* to, std::size_t room, const std::string& text) {
  if (text.size() >= room) std::abort();
  std::memcpy(to, text.c_str(), text.size() + 1);
}

}  // namespace

namespace fakes {

std::optional<const void*> volumeAnswer(const std::string& selector, const void* argument) {
  if (selector == "iconForFile:")
    return machine.pictures.contains(textOf(argument))
               ? autoreleased(createdBy<Picture>("iconForFile:"))
               : nullptr;
  if (selector == "mountedLocalVolumePaths")
    return machine.localVolumePaths ? autoreleased(objectFrom(*machine.localVolumePaths)) : nullptr;
  if (selector != "attributesOfFileSystemForPath:error:") return std::nullopt;
  const auto found = machine.fileSystemAttributes.find(textOf(argument));
  return found == machine.fileSystemAttributes.end() ? nullptr
                                                     : autoreleased(objectFrom(found->second));
}

}  // namespace fakes

extern "C" {

// The table is the system's, and the next call's, too.
int getmntinfo(struct statfs** mounts, int flags) {
  static std::vector<struct statfs> table;
  machine.mountFlags = flags;
  if (machine.refuses.contains("getmntinfo")) return 0;
  table.clear();
  for (const auto& each : machine.mounts) {
    auto& record = table.emplace_back();
    record.f_bsize = each.blockSize;
    record.f_blocks = each.blocks;
    record.f_bfree = each.blocks;  // of which some are the superuser's
    record.f_bavail = each.available;
    copy(record.f_fstypename, sizeof record.f_fstypename, each.type);
    copy(record.f_mntfromname, sizeof record.f_mntfromname, each.device);
    copy(record.f_mntonname, sizeof record.f_mntonname, each.mountPoint);
  }
  *mounts = table.data();
  return static_cast<int>(table.size());
}

// A reference is the path itself here, a volume its number among the names.
SInt32 FSPathMakeRef(const UInt8* path, FSRef* ref, Boolean*) {
  const std::string text = reinterpret_cast<const char*>(path);
  if (machine.refuses.contains("FSPathMakeRef") || text.size() >= sizeof ref->hidden)
    return notFound;
  std::memcpy(ref->hidden, text.c_str(), text.size() + 1);
  return 0;
}

SInt16 FSGetCatalogInfo(const FSRef* ref, FSCatalogInfoBitmap whichInfo, FSCatalogInfo* info,
                        HFSUniStr255* name, FSSpec* spec, FSRef* parent) {
  if (whichInfo != kFSCatInfoVolume || name || spec || parent) std::abort();
  const auto found = machine.volumeNames.find(reinterpret_cast<const char*>(ref->hidden));
  if (machine.refuses.contains("FSGetCatalogInfo") || found == machine.volumeNames.end())
    return notFound;
  info->volume =
      static_cast<SInt16>(firstVolume - std::distance(machine.volumeNames.begin(), found));
  return 0;
}

SInt16 FSGetVolumeInfo(FSVolumeRefNum volume, ItemCount index, FSVolumeRefNum* actual,
                       FSVolumeInfoBitmap whichInfo, FSVolumeInfo* info, HFSUniStr255* name,
                       FSRef* root) {
  if (index != 0 || actual || whichInfo != kFSVolInfoNone || info || root) std::abort();
  if (machine.refuses.contains("FSGetVolumeInfo")) return notFound;
  const auto& text = std::next(machine.volumeNames.begin(), firstVolume - volume)->second;
  name->length = static_cast<UInt16>(text.size());
  std::copy_n(text.begin(), std::min<std::size_t>(text.size(), 255), name->unicode);
  return 0;
}

MDItemRef MDItemCreateWithURL(CFAllocatorRef allocator, CFURLRef url) {
  if (allocator) std::abort();
  auto* const item = machine.metadata.contains(url->path)
                         ? fakes::createdBy<__MDItem>("MDItemCreateWithURL")
                         : nullptr;
  if (item) item->path = url->path;
  return item;
}

CFTypeRef MDItemCopyAttribute(MDItemRef item, CFStringRef name) {
  if (fakes::utf8Of(name->text) != "kMDStoreAccumulatedSizes") std::abort();
  const auto& value = machine.metadata.at(item->path);
  return value ? fakes::objectFrom(*value) : nullptr;
}

}  // extern "C"
