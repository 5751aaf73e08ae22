#include "vantile/platform/linux/chromium_preferences.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <utility>

namespace vantile {
namespace {

/// Looks for the one value while the text goes by; no tree is built of the rest, which may be
/// megabytes. Its operations are those that nlohmann's sax_parse calls.
class DownloadFolderFinder {
 public:
  using Json = nlohmann::json;

  std::optional<std::string> found;

  bool start_object(std::size_t) {
    if (wanted_ && onTheWay_ < way.size()) ++onTheWay_;
    return enter();
  }
  bool start_array(std::size_t) { return enter(); }
  bool end_object() { return leave(); }
  bool end_array() { return leave(); }

  bool key(Json::string_t& name) {
    wanted_ = depth_ == onTheWay_ && name == way[depth_ - 1];
    if (wanted_) found.reset();  // of two entries of one name the later counts
    return true;
  }
  bool string(Json::string_t& text) {
    if (wanted_ && onTheWay_ == way.size() && !text.empty()) found = std::move(text);
    return pass();
  }
  bool null() { return pass(); }
  bool boolean(bool) { return pass(); }
  bool number_integer(Json::number_integer_t) { return pass(); }
  bool number_unsigned(Json::number_unsigned_t) { return pass(); }
  bool number_float(Json::number_float_t, const Json::string_t&) { return pass(); }
  bool binary(Json::binary_t&) { return pass(); }
  bool parse_error(std::size_t, const std::string&, const Json::exception&) { return false; }

 private:
  static constexpr std::array<std::string_view, 2> way = {"download", "default_directory"};

  bool enter() {
    ++depth_;
    return pass();
  }
  bool leave() {
    --depth_;
    onTheWay_ = std::min(onTheWay_, depth_);
    return true;
  }
  bool pass() {
    wanted_ = false;
    return true;
  }

  std::size_t depth_ = 0;     // of objects and arrays around
  std::size_t onTheWay_ = 0;  // how many of them, from the outermost on, lead to the value
  bool wanted_ = true;        // whether the next value lies on the way: the whole text does
};

}  // namespace

std::optional<ChromiumPreferences> parseChromiumPreferences(std::string_view json) {
  DownloadFolderFinder finder;
  if (!nlohmann::json::sax_parse(json.begin(), json.end(), &finder)) return std::nullopt;
  return ChromiumPreferences{std::move(finder.found)};
}

}  // namespace vantile
