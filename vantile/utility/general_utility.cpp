#include "vantile/utility/general_utility.h"

#include <array>
#include <utility>

#include "vantile/utility/strings.h"
#include "vantile/utility/utility_ports.h"

namespace vantile {
namespace {

bool isAtLeast(const char* release) {
  const auto version = GeneralUtility::osVersion();
  return version && isLessThanOrEqual(release, *version);
}

StandardFolders& folders() {
  return *UtilityPorts::installed().folders;
}

const char* typeName(FileKind kind) {
  switch (kind) {
    case FileKind::regular:
      return "NSFileTypeRegular";
    case FileKind::folder:
      return "NSFileTypeDirectory";
    case FileKind::symbolicLink:
      return "NSFileTypeSymbolicLink";
    case FileKind::other:
      break;
  }
  return "NSFileTypeUnknown";
}

std::shared_ptr<const Date> dateAt(std::chrono::sys_time<std::chrono::nanoseconds> time) {
  return std::make_shared<const Date>(Date{time});
}

}  // namespace

bool GeneralUtility::OSIsTigerOrLater() {
  return isAtLeast("10.4");
}

bool GeneralUtility::OSIsMavericksOrLater() {
  return isAtLeast("10.9");
}

std::optional<std::string> GeneralUtility::osVersion() {
  return UtilityPorts::installed().version->version();
}

std::string GeneralUtility::userHomePath() {
  return folders().home();
}

std::string GeneralUtility::userDownlodsPath() {
  return folders().downloads();
}

std::string GeneralUtility::userLibrary() {
  return folders().library();
}

std::string GeneralUtility::userPreferencesPath() {
  return folders().preferences();
}

std::string GeneralUtility::applicationPath() {
  return folders().applications();
}

std::string GeneralUtility::userTrashPath() {
  return folders().trash();
}

std::shared_ptr<Dictionary> GeneralUtility::commonAttributesOfFile(const std::string& path) {
  const auto found = UtilityPorts::installed().files->attributes(path, false);
  if (!found) return nullptr;
  auto attributes = std::make_shared<Dictionary>();
  attributes->reserve(10);
  attributes->set(keys::NSFileType, typeName(found->facts.kind));
  attributes->set(keys::NSFileSize, found->facts.bytes);
  attributes->set(keys::NSFileModificationDate, dateAt(found->modified));
  if (found->created) attributes->set(keys::NSFileCreationDate, dateAt(*found->created));
  attributes->set(keys::NSFileReferenceCount, found->facts.links);
  attributes->set(keys::NSFileSystemNumber, found->facts.identity.device);
  attributes->set(keys::NSFileSystemFileNumber, found->facts.identity.inode);
  attributes->set(keys::NSFilePosixPermissions, found->permissions);
  attributes->set(keys::NSFileOwnerAccountID, found->owner);
  attributes->set(keys::NSFileGroupOwnerAccountID, found->group);
  return attributes;
}

const char* GeneralUtility::convertStringToCstring(std::optional<std::string> text) {
  if (!text) return nullptr;
  thread_local std::array<std::string, 16> handedOut;
  thread_local std::size_t next = 0;
  std::string& slot = handedOut[next++ % handedOut.size()];
  slot = std::move(*text);
  return slot.c_str();
}

}  // namespace vantile
