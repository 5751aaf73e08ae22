// URLs of files, and the main bundle.

#include <cstdlib>
#include <cstring>

#include "fakes/objects.h"

using fakes::machine;

struct __CFBundle : fakes::Object {};

namespace {

__CFBundle mainBundle;

CFURLRef urlOf(const char* function, std::string path) {
  auto* const url = fakes::createdBy<__CFURL>(function);
  if (url) url->path = std::move(path);
  return url;
}

}  // namespace

extern "C" {

const CFStringRef kCFURLLocalizedNameKey = reinterpret_cast<CFStringRef>(0x40);

CFURLRef CFURLCreateFromFileSystemRepresentation(CFAllocatorRef, const UInt8* path, CFIndex size,
                                                 Boolean) {
  if (size == 0) return nullptr;
  return urlOf("CFURLCreateFromFileSystemRepresentation",
               std::string(reinterpret_cast<const char*>(path), static_cast<std::size_t>(size)));
}

Boolean CFURLGetFileSystemRepresentation(CFURLRef url, Boolean resolveAgainstBase, UInt8* path,
                                         CFIndex size) {
  if (!resolveAgainstBase) std::abort();
  const auto needed = url->path.size() + 1;
  if (machine.refuses.contains("CFURLGetFileSystemRepresentation") ||
      static_cast<std::size_t>(size) < needed)
    return false;
  std::memcpy(path, url->path.c_str(), needed);
  return true;
}

// A name that is not there is no failure, but null.
Boolean CFURLCopyResourcePropertyForKey(CFURLRef url, CFStringRef key, void* value,
                                        CFErrorRef* error) {
  if (key != kCFURLLocalizedNameKey || error) std::abort();
  if (machine.refuses.contains("CFURLCopyResourcePropertyForKey")) return false;
  const auto found = machine.localizedNames.find(url->path);
  const CFTypeRef name =
      found == machine.localizedNames.end() ? nullptr : fakes::objectFrom(found->second);
  std::memcpy(value, &name, sizeof name);
  return true;
}

CFBundleRef CFBundleGetMainBundle(void) {
  return machine.hasBundle ? &mainBundle : nullptr;
}

CFURLRef CFBundleCopyResourceURL(CFBundleRef bundle, CFStringRef name, CFStringRef type,
                                 CFStringRef folder) {
  if (bundle != &mainBundle || folder) std::abort();
  auto file = *fakes::utf8Of(name->text);
  if (type) file += "." + *fakes::utf8Of(type->text);
  const auto found = machine.resources.find(file);
  return found == machine.resources.end() ? nullptr
                                          : urlOf("CFBundleCopyResourceURL", found->second);
}

// The table is the default one, and a key that is not in it is given where the default is empty.
CFStringRef CFBundleCopyLocalizedString(CFBundleRef bundle, CFStringRef key, CFStringRef value,
                                        CFStringRef table) {
  if (bundle != &mainBundle || !value->text.empty() || table) std::abort();
  const auto found = machine.translations.find(*fakes::utf8Of(key->text));
  auto* const text = fakes::createdBy<__CFString>("CFBundleCopyLocalizedString");
  if (text) text->text = found == machine.translations.end() ? key->text : found->second;
  return text;
}

}  // extern "C"
