#include "options.h"

#include <gtest/gtest.h>

#include <string>
#include <variant>
#include <vector>

namespace vantile::host {
namespace {

const KnownMonitors known{{"memory", "disk"}, {"trash", "downloads"}};

std::variant<Options, UsageError> parsed(const std::vector<std::string>& arguments) {
  return parseOptions(arguments, known);
}

Options optionsOf(const std::vector<std::string>& arguments) {
  const auto result = parsed(arguments);
  const auto* options = std::get_if<Options>(&result);
  EXPECT_NE(options, nullptr) << std::get<UsageError>(result).message;
  return options ? *options : Options{};
}

std::string errorOf(const std::vector<std::string>& arguments) {
  const auto result = parsed(arguments);
  const auto* error = std::get_if<UsageError>(&result);
  return error ? error->message : "accepted";
}

using Names = std::vector<std::string>;

TEST(HostOptions, WithoutArgumentsTheTerminalDecidesAndWhatSamplesRuns) {
  const auto options = optionsOf({});
  EXPECT_EQ(options.command, Command::Automatic);
  EXPECT_EQ(options.monitors, known.sampled);
  EXPECT_EQ(options.interval, 1);
  EXPECT_EQ(options.count, 0u);
}

TEST(HostOptions, StreamTakesItsNumbers) {
  const auto options = optionsOf({"stream", "--interval", "86400", "--count=3"});
  EXPECT_EQ(options.command, Command::Stream);
  EXPECT_EQ(options.interval, 86400);
  EXPECT_EQ(options.count, 3u);
}

TEST(HostOptions, MonitorsKeepTheOrderGivenWithoutRepetitions) {
  EXPECT_EQ(optionsOf({"stream", "--monitors", "disk,memory,disk"}).monitors,
            (Names{"disk", "memory"}));
}

TEST(HostOptions, TheLastOfARepeatedOptionCounts) {
  EXPECT_EQ(optionsOf({"stream", "--interval", "2", "--interval", "5"}).interval, 5);
}

TEST(HostOptions, AStreamHasWatchersWhereTheyAreNamedAlone) {
  EXPECT_EQ(optionsOf({"stream"}).monitors, known.sampled);
  EXPECT_EQ(optionsOf({"stream", "--monitors", "memory,trash"}).monitors,
            (Names{"memory", "trash"}));
}

TEST(HostOptions, WatchTakesAllWatchersOrThoseNamed) {
  const auto options = optionsOf({"watch", "--count", "2"});
  EXPECT_EQ(options.command, Command::Watch);
  EXPECT_EQ(options.count, 2u);
  EXPECT_EQ(options.monitors, known.watchers);
  EXPECT_EQ(optionsOf({"watch", "downloads"}).monitors, (Names{"downloads"}));
}

TEST(HostOptions, WatchersAreSeparatedByCommasOrSpaces) {
  const Names both{"downloads", "trash"};
  EXPECT_EQ(optionsOf({"watch", "downloads,trash,downloads"}).monitors, both);
  EXPECT_EQ(optionsOf({"watch", "downloads", "trash", "downloads"}).monitors, both);
}

TEST(HostOptions, AnUnknownWatcherIsNamedBesideTheKnownOnes) {
  for (const std::string name : {"", "trsh", "memory", "stream"}) {
    const auto message = "unknown watcher '" + name + "' (known: trash, downloads)";
    EXPECT_EQ(errorOf({"watch", name}), message);
    EXPECT_EQ(errorOf({"watch", "trash", name}), message);
    EXPECT_EQ(errorOf({"watch", "trash," + name + ",downloads"}), message);
  }
}

TEST(HostOptions, WatchersMayBeSeparatedByBoth) {
  EXPECT_EQ(optionsOf({"watch", "trash,", "downloads"}).monitors, (Names{"trash", "downloads"}));
}

TEST(HostOptions, WatchTakesNoInterval) {
  EXPECT_EQ(errorOf({"watch", "--interval", "1"}),
            "unknown option '--interval' (see vantile-host watch --help)");
}

TEST(HostOptions, CleanTakesNothing) {
  EXPECT_EQ(optionsOf({"clean"}).command, Command::Clean);
  EXPECT_EQ(errorOf({"clean", "--count", "3"}),
            "unknown option '--count' (see vantile-host clean --help)");
}

TEST(HostOptions, InfoIsATableUnlessJsonIsAskedFor) {
  EXPECT_EQ(optionsOf({"info"}).command, Command::Info);
  EXPECT_FALSE(optionsOf({"info"}).json);
  EXPECT_TRUE(optionsOf({"info", "--json"}).json);
}

TEST(HostOptions, InfoTakesNothingElse) {
  EXPECT_EQ(errorOf({"info", "--count", "3"}),
            "unknown option '--count' (see vantile-host info --help)");
  EXPECT_EQ(errorOf({"info", "all"}), "unexpected argument 'all' (see vantile-host info --help)");
  EXPECT_EQ(errorOf({"stream", "--json"}),
            "unknown option '--json' (see vantile-host stream --help)");
}

TEST(HostOptions, AnUnknownMonitorIsNamedBesideTheKnownOnes) {
  EXPECT_EQ(errorOf({"stream", "--monitors", "memory,memroy"}),
            "unknown monitor 'memroy' (known: memory, disk, trash, downloads)");
  EXPECT_EQ(errorOf({"stream", "--monitors", "memory,"}),
            "unknown monitor '' (known: memory, disk, trash, downloads)");
}

TEST(HostOptions, AnIntervalIsOneSecondToADay) {
  for (const std::string text : {"0", "86401", "-1", "1.5", "1s", "", "99999999999999999999999"}) {
    EXPECT_EQ(errorOf({"stream", "--interval", text}),
              "--interval must be a whole number of seconds from 1 to 86400, not '" + text + "'");
  }
}

TEST(HostOptions, ACountIsAWholeNumber) {
  for (const std::string text : {"-1", "x", "1.0", "18446744073709551616"}) {
    EXPECT_EQ(errorOf({"stream", "--count", text}),
              "--count must be a whole number, 0 for no end, not '" + text + "'");
  }
}

TEST(HostOptions, AnOptionWithoutItsValueIsNamed) {
  EXPECT_EQ(errorOf({"stream", "--interval"}),
            "option '--interval' needs a value (see vantile-host stream --help)");
}

TEST(HostOptions, AnUnknownWordIsNamedForWhatItWouldBe) {
  EXPECT_EQ(errorOf({"strem"}),
            "unknown command 'strem' (known: stream, watch, clean, info; see vantile-host --help)");
  EXPECT_EQ(errorOf({"--verbose"}), "unknown option '--verbose' (see vantile-host --help)");
  EXPECT_EQ(errorOf({"stream", "more"}),
            "unexpected argument 'more' (see vantile-host stream --help)");
}

TEST(HostOptions, HelpTellsOfCommandsExamplesAndExitStatus) {
  const auto options = optionsOf({"--help"});
  EXPECT_EQ(options.command, Command::Print);
  for (const char* part :
       {"stream", "watch", "clean", "info", "Examples:", "Exit status:", "128+N"}) {
    EXPECT_NE(options.text.find(part), std::string::npos) << part;
  }
}

TEST(HostOptions, HelpCallsThingsAsMessagesDo) {
  const auto text = optionsOf({"--help"}).text;
  EXPECT_NE(text.find("Usage: vantile-host [OPTIONS] [COMMAND]"), std::string::npos) << text;
  EXPECT_NE(text.find("\nCommands:\n"), std::string::npos) << text;
  EXPECT_NE(optionsOf({"watch", "--help"}).text.find("\nArguments:\n"), std::string::npos);
}

TEST(HostOptions, ACommandsHelpIsItsOwn) {
  const auto text = optionsOf({"stream", "--help"}).text;
  EXPECT_NE(text.find("--interval SECONDS"), std::string::npos);
  EXPECT_NE(text.find("memory, disk"), std::string::npos);
  EXPECT_EQ(text.find("Commands:"), std::string::npos);
  const auto watching = optionsOf({"watch", "--help"}).text;
  EXPECT_NE(watching.find("trash, downloads"), std::string::npos);
  EXPECT_EQ(watching.find("--interval"), std::string::npos);
}

TEST(HostOptions, HelpFitsAnOrdinaryTerminal) {
  for (const Names& arguments : {Names{"--help"},
                                 {"stream", "--help"},
                                 {"watch", "--help"},
                                 {"clean", "--help"},
                                 {"info", "--help"}}) {
    const auto text = optionsOf(arguments).text;
    for (std::size_t start = 0; start < text.size();) {
      const auto end = text.find('\n', start);
      EXPECT_LE(end - start, 100u) << text.substr(start, end - start);
      start = end + 1;
    }
  }
}

TEST(HostOptions, TheVersionIsPrinted) {
  EXPECT_TRUE(optionsOf({"--version"}).text.starts_with("vantile-host "));
}

}  // namespace
}  // namespace vantile::host
