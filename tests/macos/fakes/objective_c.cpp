// As much of the Objective-C runtime, AppKit and Foundation as takes the adapters' messages. Not
// by the header of objc_msgSend, whose type is none of those that it is called by: a method takes
// what its selector says from the registers, and looks at nothing else there.

#include <objc/runtime.h>

#include <cstdlib>
#include <cstring>
#include <memory>

#include "fakes/objects.h"

using fakes::machine;
using fakes::Object;

struct objc_class : Object {
  explicit objc_class(const char* text) : name(text) {}
  const std::string name;
};

namespace {

objc_class files("NSFileManager"), host("NSHost"), process("NSProcessInfo"), value("NSValue"),
    workspace("NSWorkspace");

struct Workspace : Object {
} sharedWorkspace;
struct Centre : Object {
} centre;
struct FileManager : Object {
} fileManager;
struct Host : Object {
} currentHost;
struct Process : Object {
} processInformation;
struct PointerHolder : fakes::Counted {
  const void* pointer = nullptr;
};

struct Exception {};

using Pool = std::vector<Object*>;
thread_local std::vector<std::unique_ptr<Pool>> pools;

std::string textOf(const void* string) {
  return *fakes::utf8Of(dynamic_cast<const __CFString&>(*fakes::objectOf(string)).text);
}

id idOf(const Object* object) {
  return reinterpret_cast<id>(const_cast<Object*>(object));
}

void post(const void* name, const void* object, const void* information) {
  fakes::Post post = {textOf(name), nullptr, {}};
  if (object) post.object = dynamic_cast<const PointerHolder&>(*fakes::objectOf(object)).pointer;
  const auto& entries = dynamic_cast<const __CFDictionary&>(*fakes::objectOf(information));
  for (const auto& [key, held] : entries.entries) post.information[textOf(key)] = textOf(held);
  machine.posts.push_back(std::move(post));
}

const void* launchedApplications() {
  if (!machine.launchedApplications) return nullptr;
  auto* const list = fakes::objectFrom(*machine.launchedApplications);
  fakes::autorelease(list);
  return list;
}

id valueWithPointer(const void* pointer) {
  auto* const holder = fakes::createdBy<PointerHolder>("valueWithPointer:");
  if (holder) holder->pointer = pointer;
  fakes::autorelease(holder);
  return idOf(holder);
}

id autoreleased(const std::optional<std::u16string>& text) {
  auto* const string = text ? fakes::createdBy<__CFString>("an autoreleased string") : nullptr;
  if (string) string->text = *text;
  autorelease(string);
  return idOf(string);
}

/// Answers what is asked of the machine: an object, or an integer in an object's place.
std::optional<id> answerOfMachine(const Object* receiver, const std::string& selector) {
  if (receiver == &host && selector == "currentHost") return idOf(&currentHost);
  if (receiver == &currentHost && selector == "localizedName")
    return autoreleased(machine.localHostName);
  if (receiver == &process && selector == "processInfo") return idOf(&processInformation);
  if (receiver == &processInformation && selector == "operatingSystem")
    return reinterpret_cast<id>(machine.operatingSystem);
  if (receiver == &processInformation && selector == "physicalMemory")
    return reinterpret_cast<id>(machine.physicalMemory);
  return std::nullopt;
}

}  // namespace

namespace fakes {

void autorelease(Object* object) {
  if (pools.empty()) std::abort();  // nobody would ever release it
  if (object) pools.back()->push_back(object);
}

}  // namespace fakes

extern "C" {

id NSUserName(void) {
  return autoreleased(machine.userName);
}
id NSFullUserName(void) {
  return autoreleased(machine.fullUserName);
}

Class objc_getClass(const char* name) {
  for (auto* const known : {&files, &host, &process, &value, &workspace})
    if (known->name == name && machine.classes.contains(name)) return known;
  if (name == std::string("NSRegularExpression") && machine.classes.contains(name))
    return reinterpret_cast<Class>(const_cast<Object*>(fakes::patternClass()));
  return nullptr;
}

SEL sel_registerName(const char* name) {
  return reinterpret_cast<SEL>(const_cast<char*>(name));
}

void* objc_autoreleasePoolPush(void) {
  const std::lock_guard lock(fakes::mutex);
  ++fakes::counts.pools;
  return pools.emplace_back(std::make_unique<Pool>()).get();
}

void objc_autoreleasePoolPop(void* pool) {
  const std::lock_guard lock(fakes::mutex);
  if (pools.empty() || pools.back().get() != pool) std::abort();
  for (auto* const object : *pools.back()) fakes::drop(object);
  pools.pop_back();
  --fakes::counts.pools;
}

fakes::Answer objc_msgSend(id self, SEL operation, const void* first, const void* second,
                           const void* third, const void* fourth) {
  if (!self) return {};
  const std::string selector = reinterpret_cast<const char*>(operation);
  if (selector == machine.raisesAt) throw Exception();
  const Object* const receiver = fakes::objectOf(self);
  if (receiver == &value && selector == "valueWithPointer:") return {valueWithPointer(first)};
  if (receiver == &workspace && selector == "sharedWorkspace") return {&sharedWorkspace};
  if (receiver == &files && selector == "defaultManager") return {&fileManager};
  if (receiver == &sharedWorkspace || receiver == &fileManager)
    if (const auto answer = fakes::volumeAnswer(selector, first)) return {*answer};
  if (receiver == &sharedWorkspace && selector == "notificationCenter") return {&centre};
  if (receiver == &sharedWorkspace && selector == "launchedApplications")
    return {launchedApplications()};
  if (receiver == &sharedWorkspace && selector == "noteFileSystemChanged:") {
    if (pools.empty()) std::abort();
    machine.notedPaths.push_back(textOf(first));
    return {};
  }
  if (receiver == &centre && selector == "postNotificationName:object:userInfo:") {
    post(first, second, third);
    return {};
  }
  if (const auto answer = answerOfMachine(receiver, selector)) return {*answer};
  const auto* const number = dynamic_cast<const __CFNumber*>(receiver);
  if (number && selector == "unsignedLongLongValue")
    return {reinterpret_cast<const void*>(
        std::visit([](auto held) { return static_cast<std::uint64_t>(held); }, number->number))};
  if (const auto answer = fakes::patternsAnswer(receiver, selector, first, second, third, fourth))
    return *answer;
  throw Exception();  // an unrecognized selector
}

}  // extern "C"
