#include "vantile/platform/workspace.h"

#include "vantile/platform/macos/core_foundation.h"
#include "vantile/platform/macos/objective_c.h"

namespace vantile {
namespace {

Owned<CFDictionaryRef> dictionaryWith(CFStringRef key, CFStringRef value) {
  const void* keys[] = {key};
  const void* values[] = {value};
  return Owned<CFDictionaryRef>(CFDictionaryCreate(
      nullptr, keys, values, 1, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
}

// Not of an Objective-C source, so that it runs in the tests, too. The classes are found by name in
// AppKit and Foundation, which are linked to.
class MacosWorkspace final : public Workspace {
 public:
  void noteFileSystemChanged(const std::string& path) override {
    const AutoreleasePool pool;
    const auto where = pathString(path);
    if (where) message<void>(shared(), "noteFileSystemChanged:", bridged(where.get()));
  }

  void post(const std::string& name, const void* object, const std::string& path) override {
    const AutoreleasePool pool;
    const auto called = stringOf(name), where = pathString(path), key = stringOf("path");
    if (!called || !where || !key) return;
    const auto information = dictionaryWith(key.get(), where.get());
    if (!information) return;
    const id holder = message<id>(classNamed("NSValue"), "valueWithPointer:", object);
    const id centre = message<id>(shared(), "notificationCenter");
    message<void>(centre, "postNotificationName:object:userInfo:", bridged(called.get()), holder,
                  bridged(information.get()));
  }

 private:
  static id shared() { return message<id>(classNamed("NSWorkspace"), "sharedWorkspace"); }
};

}  // namespace

std::shared_ptr<Workspace> systemWorkspace() {
  static auto& workspace = *new std::shared_ptr<Workspace>(std::make_shared<MacosWorkspace>());
  return workspace;
}

}  // namespace vantile
