#include "vantile/platform/linux/chromium_preferences.h"

#include <nlohmann/json.hpp>

#include "fuzz/fuzzer.h"

namespace vantile::fuzz {
namespace {

using Json = nlohmann::json;

/// What a tree of the whole text says.
std::optional<std::string> folderInTree(const Json& tree) {
  if (!tree.is_object() || !tree.contains("download")) return std::nullopt;
  const auto& download = tree["download"];
  if (!download.is_object() || !download.contains("default_directory")) return std::nullopt;
  const auto& folder = download["default_directory"];
  if (!folder.is_string() || folder.get<std::string>().empty()) return std::nullopt;
  return folder.get<std::string>();
}

void checkAgainstTree(std::string_view text) {
  const auto tree = Json::parse(text.begin(), text.end(), nullptr, false);
  const auto preferences = parseChromiumPreferences(text);
  require(preferences.has_value() == !tree.is_discarded(), "a text is whole when it is JSON");
  require(!preferences || preferences->downloadFolder == folderInTree(tree),
          "the folder is the one in the tree");
}

}  // namespace

void consume(std::string_view input) {
  checkAgainstTree(input);
  Json tree;
  tree["a"] = "b";
  tree["download"]["default_directory"] = std::string(input);
  tree["download"]["z"] = Json::array({1, nullptr});
  const auto text = tree.dump(-1, ' ', input.size() % 2 == 0, Json::error_handler_t::replace);
  checkAgainstTree(text);
  require(input.empty() || parseChromiumPreferences(text)->downloadFolder,
          "a folder that was written is found");
  require(!parseChromiumPreferences(text.substr(0, input.size() % text.size())),
          "a text cut off is half-written");
}

}  // namespace vantile::fuzz
