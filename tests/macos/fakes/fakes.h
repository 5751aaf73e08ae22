#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "fakes/property_list.h"

/// Fakes of the macOS functions that the adapters call: what a test sets, and what it reads.
namespace fakes {

/// One record of what a kernel queue watches, or of what happened.
struct KernelEvent {
  std::uint64_t ident = 0;
  int filter = 0;
  unsigned flags = 0, fflags = 0;
  std::int64_t data = 0;
  std::uint64_t udata = 0;
  friend bool operator==(const KernelEvent&, const KernelEvent&) = default;
};

/// One call of kevent.
struct KernelEventCall {
  std::vector<KernelEvent> changes;
  bool hasEvents = false;                       ///< was given a list to put events into
  int room = 0;                                 ///< of that list
  std::int64_t seconds = -1, nanoseconds = -1;  ///< of the time-out; -1: it was given none
};

/// A notification that was posted to the desktop's centre.
struct Post {
  std::string name;
  const void* object = nullptr;                    ///< the pointer that the object holds
  std::map<std::string, std::string> information;  ///< the user info
  friend bool operator==(const Post&, const Post&) = default;
};

/// A record of the mount table.
struct MountedFileSystem {
  std::string type, device, mountPoint;
  std::uint32_t blockSize = 0;
  std::uint64_t blocks = 0, available = 0;
};

/// No limit of a process's descriptors.
constexpr std::uint64_t unlimited = ~std::uint64_t{0};

/// What the faked system answers.
struct Machine {
  bool isFirstThread = true;

  std::uint32_t hostName = 0x203;  ///< what mach_host_self gives
  int statisticsResult = 0;        ///< of both statistics calls
  bool exportsStatistics64 = true;

  std::vector<std::uint32_t> processorTicks;  ///< four words a processor
  std::optional<unsigned> processorCount;     ///< in place of as many as have ticks
  int processorResult = 0;                    ///< of host_processor_info
  std::uint32_t processorSet = 0x305;         ///< the default set; 0 is refused
  int taskCount = 0, threadCount = 0, processorSetResult = 0;
  std::vector<double> loadAverages;

  int matchingResult = 0, openResult = 0, closeResult = 0, callResult = 0;  ///< IOKit's
  std::vector<std::uint32_t> services;                                      ///< "AppleSMC" finds
  std::vector<std::string> calls;                                           ///< of IOKit, in order
  std::string callInput, callOutput;  ///< bytes of the last call to a service, and of its answer
  std::size_t callRoom = 0;           ///< for them

  std::map<std::pair<int, int>, std::string> sysctlNumbers;  ///< bytes by the two numbers
  std::map<std::string, std::string> sysctlValues;  ///< bytes by name; a name not here fails
  std::map<std::string, std::string> sysctlLater;   ///< what they become once their size was told
  std::optional<std::string> swapUsage;             ///< bytes of the record; nothing fails

  std::optional<std::string> accountHome = "/Users/ada";  ///< nothing: no account
  std::size_t accountBytes = 0;  ///< what the account's entry takes, where the buffer matters

  std::optional<std::int64_t> modifiedSeconds;  ///< in place of a file's own
  std::optional<std::int64_t> birthSeconds;     ///< in place of a file's own
  bool refusesObjects = false;                  ///< Create gives null
  std::set<std::string> refuses;                ///< CoreFoundation's functions that fail
  bool decodesAllPaths = false;                 ///< tells the characters of a path not in UTF-8

  std::map<std::string, PropertyList> lists;  ///< by the bytes that CoreFoundation takes for them
  int listsParsed = 0;
  std::map<std::string, PropertyList> localizedNames;  ///< by path
  bool hasBundle = true;
  std::map<std::string, std::string> resources;  ///< of the main bundle, paths by name and type

  std::map<std::string, std::u16string> translations;  ///< in its default table

  /// Descriptions of power sources, nothing for one that went; nothing at all: no information.
  std::optional<std::vector<std::optional<PropertyList>>> powerSources;
  bool hasPowerSourcesList = true;
  double timeRemaining = -1;
  int sourcesInDefaultMode = 0;  ///< that were added to a run loop
  int mainPortResult = 0, batteryInfoResult = 0;
  std::optional<PropertyList> batteryInfo;   ///< a list of records
  std::optional<PropertyList> batteryEntry;  ///< nothing: no such service
  int propertiesResult = 0;

  bool hasExpertDevice = true;
  std::map<std::string, PropertyList> registry;  ///< the expert device's properties
  std::optional<std::u16string> computerName, localHostName, userName, fullUserName;
  std::uint64_t operatingSystem = 5, physicalMemory = 0;

  /// That are loaded.
  std::set<std::string> classes = {"NSFileManager",       "NSHost",  "NSProcessInfo",
                                   "NSRegularExpression", "NSValue", "NSWorkspace"};
  std::string raisesAt;                 ///< a selector that raises an exception
  std::vector<std::string> notedPaths;  ///< that the desktop was told of
  std::vector<Post> posts;
  std::optional<PropertyList> launchedApplications;  ///< nothing: no answer

  std::vector<MountedFileSystem> mounts;              ///< in the order of the table
  int mountFlags = -1;                                ///< that the table was last asked with
  std::map<std::string, std::u16string> volumeNames;  ///< by mount point
  std::set<std::string> pictures;                ///< paths that the workspace has a picture for
  std::optional<PropertyList> localVolumePaths;  ///< nothing: no answer
  std::map<std::string, PropertyList> fileSystemAttributes;     ///< by path
  std::map<std::string, std::optional<PropertyList>> metadata;  ///< of volumes; nothing: no sizes

  int queueError = 0;                ///< of kqueue
  int changeError = 0;               ///< of kevent, when it is given changes
  int interruptedWaits = 0;          ///< how often kevent is interrupted from here on
  int interruptedOpens = 0;          ///< how often open is
  int openFlags = 0, openMode = -1;  ///< that the last open was given
  std::vector<KernelEventCall> eventCalls;
  std::optional<std::uint64_t> descriptorLimit = 256;  ///< of the process; nothing fails

  std::map<std::string, PropertyList> store;          ///< the configuration's, by key
  std::string storeName;                              ///< that the session was given
  std::vector<std::string> storeKeys, storePatterns;  ///< whose changes it asked for
  std::vector<std::string> storeReads;
  void* storeSource = nullptr;  ///< of its changes

  std::map<std::string, std::uint32_t> namedServices;  ///< by interface, 0x701 and so on
  bool hasParent = true;                               ///< a service has one, 0x100 further on
  std::optional<std::string> routingList;              ///< bytes of the interfaces' list
  std::optional<std::string> routingListLater;         ///< what it becomes once its size was told
  std::optional<std::size_t> routingSize;              ///< that is told instead of its own
  std::vector<const void*> routingBuffers;             ///< that it was put into
  std::vector<std::size_t> routingRooms;               ///< and how large they were said to be

  std::vector<std::string> socketAddresses;  ///< bytes that connect was given
  std::string socketPath;                    ///< where it goes in place of the address
  bool refusesSocketOption = false;

  bool refusesThreads = false;
  int spawnFlags = 0;  ///< that the last spawn asked for
};

extern Machine machine;

/// Objects that somebody still owes a release.
struct Live {
  int hostRights = 0;
  int setRights = 0;       ///< to processor sets
  int mainPortRights = 0;  ///< to IOKit's
  int kernelMemory = 0;    ///< arrays that the kernel gave
  int kernelObjects = 0;   ///< IOKit's: iterators and services
  int connections = 0;     ///< to services
  int sources = 0, timers = 0;
  int loopReferences = 0;  ///< beyond a thread's own to its loop
  int work = 0;            ///< on the global queue
  int values = 0;          ///< CoreFoundation's and Objective-C's other objects
  int pools = 0;           ///< autorelease pools
  int threads = 0;         ///< neither joined nor detached

  friend bool operator==(const Live&, const Live&) = default;
};

/// What became live since `reset`.
Live live();

/// Sets the machine back and counts from here on.
void reset();

/// Has this thread's run loop tell the configuration's session of a change.
void changeStore();

/// The time since the machine started, which stands still by itself. A sleeping run loop moves it
/// on to its next timer.
std::chrono::nanoseconds uptime();
void advance(std::chrono::nanoseconds time);

/// How often a run loop woke from its sleep since `reset`.
int wakeups();

/// Does what is due on the global queue, in order, on this thread.
void runGlobalQueue();

/// Tells those who asked that the power sources changed, once their run loops run.
void changePowerSources();

/// Has something happen to an open file, for the kernel queues that watch it.
void happen(int file, std::uint32_t changes);

/// Waits until a thread sleeps in kevent for longer than any test takes.
void awaitSleeper();

}  // namespace fakes
