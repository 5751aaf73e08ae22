#include "vantile/platform/parsers/launch_evidence.h"

#include <algorithm>
#include <string>

#include "vantile/platform/linux/desktop_entry.h"
#include "vantile/platform/parsers/launched_processes.h"

#include "fuzz/fuzzer.h"

namespace vantile::fuzz {
namespace {

void checkUnit(std::string_view input) {
  const auto unit = applicationUnitOf(input);
  if (unit) {
    require(input.find(unit->group) != input.npos, "a group is in the text");
    require(unit->group.find("/app-") != std::string::npos, "a group is an application's");
    require(!unit->identifiers.empty(), "a unit has an identifier");
    for (const auto& each : unit->identifiers) require(!each.empty(), "an identifier has a name");
  }
  std::string name(split(split(input, '\n').front(), '/').front());
  std::erase(name, '\\');
  std::erase(name, '-');
  std::erase(name, '@');
  if (name.empty()) return;
  const auto found = applicationUnitOf("0::/app-x-" + name + "-1.scope/app.slice\n");
  require(found && found->identifiers.front() == name, "an identifier comes back as it was");
}

void checkLaunch(std::string_view input) {
  const auto launch = desktopLaunchOf(input);
  require(!launch || (launch->pid > 0 && launch->entry.starts_with('/')), "a launch is whole");
  const auto first = split(input, '\0').front();
  const std::string path = "/" + std::string(first);
  const auto found = desktopLaunchOf("GIO_LAUNCHED_DESKTOP_FILE=" + path + std::string(1, '\0') +
                                     "GIO_LAUNCHED_DESKTOP_FILE_PID=41" + std::string(1, '\0'));
  require(found && found->entry == path && found->pid == 41, "a launch comes back as it was");
}

void checkProgram(std::string_view input) {
  const auto program = programOf(input);
  require(!program || (!program->empty() && !runsOthers(*program)), "a program is its own");
  std::string quoted = "\"/opt/";
  for (const char each : input) {
    if (each == '"' || each == '\\') quoted.push_back('\\');
    quoted.push_back(each);
  }
  const std::string path = "/opt/" + std::string(input);
  if (!path.ends_with('/') && !runsOthers(path))
    require(programOf(quoted + "\" %u") == path, "a program comes back as it was");
  (void)executableOf(input);
}

void checkEntry(std::string_view input) {
  const std::string text(input);
  const auto entry = desktopEntryOf(text);
  if (!entry) return;
  require(!entry->name || !entry->name->empty(), "a name is not empty");
  require(entry->name == localizedNameOf(text), "a name is the one of the file");
  if (entry->command) (void)programOf(*entry->command);
  require(entry->isShown || !entry->isShownIn({"GNOME"}), "what is hidden is hidden everywhere");
}

/// Any forest of processes; each four bytes make one.
void checkLeaders(std::string_view input) {
  const std::string groups[] = {"/a", "/b"}, programs[] = {"/p", "/q"};
  std::vector<LaunchedProcess> processes;
  for (std::size_t at = 0; at + 4 <= input.size() && processes.size() < 64; at += 4) {
    const auto byte = [&](std::size_t of) {
      return static_cast<std::size_t>(static_cast<unsigned char>(input[at + of]));
    };
    const auto entry = [](std::size_t bits) {
      return bits % 4 == 3 ? LaunchedProcess::none : bits % 4;
    };
    LaunchedProcess process;
    process.pid = static_cast<std::int32_t>(processes.size()) * 3 + 1;
    process.parent = static_cast<std::int32_t>(byte(0));
    process.startTicks = byte(1) % 16;
    if (byte(1) & 16) process.group = &groups[byte(1) / 32 % 2];
    if (process.group) process.unitEntry = entry(byte(2));
    process.launchEntry = byte(2) & 64 ? entry(byte(2) / 4) : LaunchedProcess::none;
    process.programEntry = entry(byte(3));
    if (byte(3) & 16) process.executable = &programs[byte(3) / 32 % 2];
    processes.push_back(process);
  }
  const auto leaders = applicationLeaders(processes);
  require(leaders.size() <= processes.size(), "a process leads one application at most");
  for (const auto& leader : leaders) {
    const auto& process = processes[leader.process];
    require(leader.entry == process.unitEntry || leader.entry == process.launchEntry ||
                leader.entry == process.programEntry,
            "an application is of one of its process's entries");
  }
  for (std::size_t at = 0; at < processes.size(); ++at) {
    const auto& process = processes[at];
    const bool mustLead = process.launchEntry != LaunchedProcess::none && !process.group;
    const bool leads = std::any_of(leaders.begin(), leaders.end(),
                                   [at](const auto& each) { return each.process == at; });
    require(leads || !mustLead, "what was launched by itself is an application");
  }
}

}  // namespace

void consume(std::string_view input) {
  checkUnit(input);
  checkLaunch(input);
  checkProgram(input);
  checkEntry(input);
  checkLeaders(input);
}

}  // namespace vantile::fuzz
