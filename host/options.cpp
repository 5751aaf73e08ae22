#include "options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <optional>
#include <string_view>
#include <utility>

namespace vantile::host {
namespace {

constexpr const char* version = "vantile-host " VANTILE_VERSION "\n";

constexpr const char* summary =
    "Shows what this machine is doing, through the Vantile library.\n"
    "\n"
    "Without a command: on a terminal, a live dashboard (q quits); anywhere else, five\n"
    "samples as JSON, as 'vantile-host stream --count 5' prints them.\n";

constexpr const char* examples =
    "Examples:\n"
    "  vantile-host                              # the dashboard\n"
    "  vantile-host stream --interval 5          # a sample every five seconds, until Ctrl-C\n"
    "  vantile-host stream --monitors memory --count 1 | jq '.arguments[0].memory_used'\n"
    "  vantile-host watch downloads              # a line for each download that finishes\n"
    "  vantile-host clean                        # free memory that caches and idle programs hold\n"
    "  vantile-host info --json | jq .sysModelID # what this machine is\n"
    "\n"
    "Exit status:\n"
    "  0      done; also when the reader of the output went away\n"
    "  1      the system refused something; one line on standard error says what\n"
    "  2      the arguments make no sense; one line on standard error says why\n"
    "  128+N  ended by signal N: 130 after Ctrl-C, 143 after SIGTERM\n"
    "\n"
    "'vantile-host stream --help' and those of the other commands tell more.\n";

constexpr const char* streamSummary =
    "Prints one JSON object a line for each call that a monitor makes to its delegate:\n"
    "\n"
    "  {\"time\":1700000000.125,\"monitor\":\"memory\",\"operation\":\"update...\","
    "\"arguments\":[{...}]}\n"
    "\n"
    "  time       seconds since the epoch, with milliseconds\n"
    "  monitor    which monitor called\n"
    "  operation  the delegate's operation\n"
    "  arguments  what it was given: dictionaries under their own keys in their own order,\n"
    "             null for nil, dates as ISO 8601 text in UTC, images as {\"name\",\"file\"};\n"
    "             bytes that are not UTF-8 become U+FFFD\n";

constexpr const char* streamExamples =
    "Examples:\n"
    "  vantile-host stream --monitors memory --count 10 > samples.jsonl\n"
    "  vantile-host stream --monitors memory | jq -c '[.time, .arguments[0].memory_free]'\n"
    "\n"
    "Exit status: 0 after the last line or when the reader went away, 1 when a monitor has\n"
    "nothing to read or the output cannot be written, 2 for bad arguments, 128+N by signal N.\n";

constexpr const char* watchSummary =
    "Prints one JSON object a line, as 'vantile-host stream' does, for each thing that happens:\n"
    "\n"
    "  downloads     downloadFileCompleted, with the path: a web browser finished a download\n"
    "  applications  appAdded, with the path: an application was installed;\n"
    "                movedToTrash, with the path it has there\n"
    "  trash         trashAddedApp, with the path: an application is in the Trash;\n"
    "                trashUsedSizeChanged, with the bytes in the Trash: at the start, then at\n"
    "                each change of the Trash with which they are not as many as at the start\n"
    "\n"
    "A path that is not known is null. Watches until a signal comes.\n";

constexpr const char* watchExamples =
    "Examples:\n"
    "  vantile-host watch downloads --count 1 | jq -r '.arguments[0]'\n"
    "  vantile-host watch applications,trash\n"
    "\n"
    "Exit status: 0 after the last line or when the reader went away, 1 when the output cannot be\n"
    "written, 2 for bad arguments, 128+N by signal N.\n";

constexpr const char* cleanSummary =
    "Puts the system under memory pressure for ten seconds, so that it gives up caches and\n"
    "pages out what nobody uses, then gives all of it back and says what was freed. Expect\n"
    "the machine to be slow meanwhile. It is over after about eleven seconds, or as soon after\n"
    "that as the memory then being filled is full.\n"
    "\n"
    "Prints a progress bar on a terminal, plain lines elsewhere; then free memory and the\n"
    "active and inactive memory (file cache and programs) before and after.\n";

constexpr const char* cleanExamples =
    "Ctrl-C ends the pressure early: no more memory is taken once the present filling is done,\n"
    "and what was freed is still told a second later. A second Ctrl-C ends the program at once.\n"
    "\n"
    "Exit status: 0 after a whole run, also when nothing was freed; 130 after Ctrl-C, 143 after\n"
    "SIGTERM; 1 when the system does not tell its memory; 2 for bad arguments.\n";

constexpr const char* infoSummary =
    "Prints what this machine is: its names, its user, system and version, memory, serial number,\n"
    "model and processor. What the system does not tell is '-'; serial number and UUID it often\n"
    "tells root alone. Then the mounted volumes, how full they are and, once the dashboard or\n"
    "'stream' has counted it, with what.\n";

constexpr const char* infoExamples =
    "Examples:\n"
    "  vantile-host info\n"
    "  vantile-host info --json | jq .sysPhysicalMemory\n"
    "\n"
    "Exit status: 0; 1 when the output cannot be written, 2 for bad arguments.\n";

std::string joined(std::span<const std::string> words, const char* separator) {
  std::string text;
  for (const auto& word : words) text += (text.empty() ? "" : separator) + word;
  return text;
}

std::optional<std::uint64_t> wholeNumber(std::string_view text) {
  std::uint64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number);
  if (result.ec != std::errc() || result.ptr != end) return std::nullopt;
  return number;
}

/// Both as CLI11 hands them over: the numbers are read here, for messages of our own.
struct Raw {
  std::string monitors, interval = "1", count = "0";
  std::vector<std::string> watchers;
  bool json = false;
};

/// Adds the names of a list that is separated by commas.
std::optional<UsageError> takeNames(std::string_view list, const char* kind,
                                    std::span<const std::string> known,
                                    std::vector<std::string>& names) {
  for (;;) {
    const auto comma = list.find(',');
    const std::string name(list.substr(0, comma));
    if (std::ranges::find(known, name) == known.end()) {
      return UsageError{std::string("unknown ") + kind + " '" + name +
                        "' (known: " + joined(known, ", ") + ")"};
    }
    if (std::ranges::find(names, name) == names.end()) names.push_back(name);
    if (comma == std::string_view::npos) return std::nullopt;
    list.remove_prefix(comma + 1);
  }
}

std::vector<std::string> namesOf(const KnownMonitors& known) {
  auto names = known.sampled;
  names.insert(names.end(), known.watchers.begin(), known.watchers.end());
  return names;
}

std::optional<UsageError> takeMonitors(const Raw& raw, const KnownMonitors& known,
                                       Options& options) {
  if (options.command != Command::Watch) {
    return takeNames(raw.monitors, "monitor", namesOf(known), options.monitors);
  }
  for (std::string_view list : raw.watchers) {
    if (list.size() > 1 && list.ends_with(',')) list.remove_suffix(1);  // "downloads, trash"
    if (auto error = takeNames(list, "watcher", known.watchers, options.monitors)) return error;
  }
  if (raw.watchers.empty()) options.monitors = known.watchers;
  return std::nullopt;
}

std::variant<Options, UsageError> understood(const Raw& raw, Command command,
                                             const KnownMonitors& known) {
  Options options;
  options.command = command;

  const auto interval = wholeNumber(raw.interval);
  if (!interval || *interval < 1 || *interval > 86400) {
    return UsageError{"--interval must be a whole number of seconds from 1 to 86400, not '" +
                      raw.interval + "'"};
  }
  options.interval = static_cast<std::int32_t>(*interval);

  const auto count = wholeNumber(raw.count);
  if (!count) {
    return UsageError{"--count must be a whole number, 0 for no end, not '" + raw.count + "'"};
  }
  options.count = *count;
  options.json = raw.json;

  if (auto error = takeMonitors(raw, known, options)) return *error;
  return options;
}

/// `inCommand` is the command's name, empty where none was given.
std::string seeHelp(const std::string& inCommand) {
  return " (see vantile-host " + (inCommand.empty() ? "" : inCommand + " ") + "--help)";
}

UsageError unexpected(const std::string& argument, const std::string& inCommand) {
  const auto help = seeHelp(inCommand);
  if (argument.starts_with("-")) return {"unknown option '" + argument + "'" + help};
  if (!inCommand.empty()) return {"unexpected argument '" + argument + "'" + help};
  return {"unknown command '" + argument +
          "' (known: stream, watch, clean, info; see vantile-host --help)"};
}

std::string nameOf(const CLI::ParseError& error) {
  const std::string what = error.what();
  return what.substr(0, what.find_first_of(": "));
}

/// The arguments' grammar.
class Grammar {
 public:
  explicit Grammar(const KnownMonitors& known) {
    app.set_help_flag("-h,--help", "Print help and exit");
    app.add_flag("--version", versionAsked, "Print the version and exit");
    app.footer(examples);
    app.require_subcommand(0, 1);
    stream = app.add_subcommand("stream", "Print samples as JSON, one object a line");
    watch =
        app.add_subcommand("watch", "Print downloads, new applications and the Trash's changes");
    clean = app.add_subcommand("clean", "Free memory that caches and idle programs hold");
    stream->footer(streamExamples);
    watch->footer(watchExamples);
    clean->footer(cleanExamples);
    info = app.add_subcommand("info", "Print what this machine is");
    info->footer(infoExamples);
    for (auto* command : {&app, stream, watch, clean, info}) command->allow_extras();
    for (auto* command : {stream, watch, clean, info}) command->group("Commands");
    const auto format = app.get_formatter();
    format->column_width(26);
    format->label("SUBCOMMAND", "COMMAND");
    format->label("Positionals", "Arguments");

    raw.monitors = joined(known.sampled, ",");
    option(stream, "--monitors", raw.monitors, "LIST",
           "Separated by commas, of:\n" + joined(known.sampled, ", ") + ",\n" +
               joined(known.watchers, ", ") + ".\nThose that take samples when none is named");
    option(stream, "--interval", raw.interval, "SECONDS",
           "Between two samples, 1 to 86400; 1 when not given");
    option(stream, "--count", raw.count, "N",
           "End after N samples of each monitor; one that only\n"
           "reports changes is done after its first. 0: no end");
    watch
        ->add_option("watchers", raw.watchers,
                     "Separated by spaces or commas, of: " + joined(known.watchers, ", ") +
                         ".\nAll of them when none is named")
        ->type_name("");
    option(watch, "--count", raw.count, "N", "End after N lines. 0: no end");
    info->add_flag("--json", raw.json,
                   "Print one JSON object under the properties' names, with\n"
                   "null for what is not told");
  }

  /// The command that was given.
  Command command() const {
    if (*stream) return Command::Stream;
    if (*watch) return Command::Watch;
    if (*info) return Command::Info;
    return *clean ? Command::Clean : Command::Automatic;
  }

  /// Its name; empty where none was given.
  std::string commandName() const {
    const auto given = app.get_subcommands();
    return given.empty() ? std::string() : given.front()->get_name();
  }

  /// The lists of commands and options, with the long summary only in the command's own help.
  std::string help() {
    if (*stream) stream->description(streamSummary);
    if (*watch) watch->description(watchSummary);
    if (*clean) clean->description(cleanSummary);
    if (*info) info->description(infoSummary);
    return app.help();
  }

  CLI::App app{summary, "vantile-host"};
  Raw raw;
  bool versionAsked = false;

 private:
  static void option(CLI::App* command, const std::string& name, std::string& target,
                     const std::string& type, const std::string& help) {
    command->add_option(name, target, help)->type_name(type)->take_last();
  }

  CLI::App* stream = nullptr;
  CLI::App* watch = nullptr;
  CLI::App* clean = nullptr;
  CLI::App* info = nullptr;
};

}  // namespace

std::variant<Options, UsageError> parseOptions(std::span<const std::string> arguments,
                                               const KnownMonitors& known) {
  Grammar grammar(known);
  try {
    // CLI11 takes them from the back.
    grammar.app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
  } catch (const CLI::CallForHelp&) {
    return Options{.command = Command::Print, .monitors = {}, .text = grammar.help()};
  } catch (const CLI::ArgumentMismatch& error) {
    return UsageError{"option '" + nameOf(error) + "' needs a value" +
                      seeHelp(grammar.commandName())};
  } catch (const CLI::ParseError& error) {
    return UsageError{error.what()};
  }
  const auto command = grammar.command();
  if (const auto extra = grammar.app.remaining(true); !extra.empty()) {
    return unexpected(extra.front(), grammar.commandName());
  }
  if (grammar.versionAsked) {
    return Options{.command = Command::Print, .monitors = {}, .text = version};
  }
  return understood(grammar.raw, command, known);
}

}  // namespace vantile::host
