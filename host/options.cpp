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
    "  vantile-host                              the dashboard\n"
    "  vantile-host stream --interval 5          a sample every five seconds, until Ctrl-C\n"
    "  vantile-host stream --count 1 | jq '.arguments[0].memory_used'\n"
    "  vantile-host clean                        put idle memory to use again\n"
    "\n"
    "Exit status:\n"
    "  0      done; also when the reader of the output went away\n"
    "  1      the system refused something; one line on standard error says what\n"
    "  2      the arguments make no sense; one line on standard error says why\n"
    "  128+N  ended by signal N: 130 after Ctrl-C, 143 after SIGTERM\n"
    "\n"
    "'vantile-host stream --help' and 'vantile-host clean --help' tell more.\n";

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
    "  vantile-host stream | jq -c '[.time, .arguments[0].memory_free]'\n"
    "\n"
    "Exit status: 0 after the last line or when the reader went away, 1 when a monitor has\n"
    "nothing to read or the output cannot be written, 2 for bad arguments, 128+N by signal N.\n";

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
};

std::variant<Options, UsageError> understood(const Raw& raw, Command command,
                                             std::span<const std::string> known) {
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

  for (std::string_view rest = raw.monitors;;) {
    const auto comma = rest.find(',');
    const std::string name(rest.substr(0, comma));
    if (std::ranges::find(known, name) == known.end()) {
      return UsageError{"unknown monitor '" + name + "' (known: " + joined(known, ", ") + ")"};
    }
    if (std::ranges::find(options.monitors, name) == options.monitors.end()) {
      options.monitors.push_back(name);
    }
    if (comma == std::string_view::npos) return options;
    rest.remove_prefix(comma + 1);
  }
}

UsageError unexpected(const std::string& argument, bool inCommand) {
  if (argument.starts_with("-")) {
    return {"unknown option '" + argument + "' (see vantile-host --help)"};
  }
  if (inCommand) return {"unexpected argument '" + argument + "' (see vantile-host --help)"};
  return {"unknown command '" + argument + "' (known: stream, clean; see vantile-host --help)"};
}

std::string nameOf(const CLI::ParseError& error) {
  const std::string what = error.what();
  return what.substr(0, what.find_first_of(": "));
}

/// The arguments' grammar.
class Grammar {
 public:
  explicit Grammar(std::span<const std::string> known) {
    app.set_help_flag("-h,--help", "Print help and exit");
    app.add_flag("--version", versionAsked, "Print the version and exit");
    app.footer(examples);
    app.require_subcommand(0, 1);
    stream = app.add_subcommand("stream", "Print samples as JSON, one object a line");
    clean = app.add_subcommand("clean", "Free memory that nobody uses");
    stream->footer(streamExamples);
    clean->footer(cleanExamples);
    for (auto* command : {&app, stream, clean}) command->allow_extras();
    app.get_formatter()->column_width(26);

    raw.monitors = joined(known, ",");
    option("--monitors", raw.monitors, "LIST", "Separated by commas, of: " + joined(known, ", "));
    option("--interval", raw.interval, "SECONDS", "Between two samples, 1 to 86400");
    option("--count", raw.count, "N",
           "End after N samples of each monitor; one that only\n"
           "reports changes is done after its first. 0: no end");
  }

  /// The lists of commands and options, with the long summary only in the command's own help.
  std::string help() {
    if (*stream) stream->description(streamSummary);
    if (*clean) clean->description(cleanSummary);
    return app.help();
  }

  CLI::App app{summary, "vantile-host"};
  CLI::App* stream = nullptr;
  CLI::App* clean = nullptr;
  Raw raw;
  bool versionAsked = false;

 private:
  void option(const std::string& name, std::string& target, const std::string& type,
              const std::string& help) {
    stream->add_option(name, target, help)->type_name(type)->capture_default_str()->take_last();
  }
};

}  // namespace

std::variant<Options, UsageError> parseOptions(std::span<const std::string> arguments,
                                               std::span<const std::string> known) {
  Grammar grammar(known);
  try {
    // CLI11 takes them from the back.
    grammar.app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
  } catch (const CLI::CallForHelp&) {
    return Options{.command = Command::Print, .monitors = {}, .text = grammar.help()};
  } catch (const CLI::ArgumentMismatch& error) {
    return UsageError{"option '" + nameOf(error) + "' needs a value (see vantile-host --help)"};
  } catch (const CLI::ParseError& error) {
    return UsageError{error.what()};
  }
  const bool inCommand = *grammar.stream || *grammar.clean;
  if (const auto extra = grammar.app.remaining(true); !extra.empty()) {
    return unexpected(extra.front(), inCommand);
  }
  if (grammar.versionAsked) {
    return Options{.command = Command::Print, .monitors = {}, .text = version};
  }
  const auto command = *grammar.stream  ? Command::Stream
                       : *grammar.clean ? Command::Clean
                                        : Command::Automatic;
  return understood(grammar.raw, command, known);
}

}  // namespace vantile::host
