#include "json.h"

#include <array>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <variant>

#include "text.h"

namespace vantile::host {
namespace {

using Json = nlohmann::ordered_json;

Json toJson(const Value& value);

std::string isoText(const Date& date) {
  namespace chrono = std::chrono;
  const auto moment = chrono::floor<chrono::milliseconds>(date.time);
  const auto midnight = chrono::floor<chrono::days>(moment);
  const chrono::year_month_day day(midnight);
  const chrono::hh_mm_ss clock(moment - midnight);
  std::array<char, 64> text;
  std::snprintf(
      text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02d.%03dZ", static_cast<int>(day.year()),
      static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()),
      static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
      static_cast<int>(clock.seconds().count()), static_cast<int>(clock.subseconds().count()));
  return text.data();
}

struct Converter {
  template <class Scalar>
  Json operator()(const Scalar& scalar) const {
    return scalar;
  }
  Json operator()(const std::shared_ptr<const Date>& date) const {
    return date ? Json(isoText(*date)) : Json();
  }
  Json operator()(const std::shared_ptr<const Image>& image) const {
    if (!image) return {};
    Json object = Json::object();
    object["name"] = image->name;
    object["file"] = image->file;
    return object;
  }
  Json operator()(const std::shared_ptr<Array>& array) const {
    if (!array) return {};
    Json list = Json::array();
    for (const auto& item : *array) list.push_back(toJson(item));
    return list;
  }
  Json operator()(const std::shared_ptr<Dictionary>& dictionary) const {
    if (!dictionary) return {};
    Json object = Json::object();
    for (const auto& entry : *dictionary) object[std::string(entry.key())] = toJson(entry.value);
    return object;
  }
};

Json toJson(const Value& value) {
  return std::visit(Converter{}, value.held());
}

/// Also what JSON lets stand and a terminal would obey is escaped. It can only be within a text.
std::string dump(const Json& json) {
  const auto plain = json.dump(-1, ' ', false, Json::error_handler_t::replace);
  std::string text;
  text.reserve(plain.size());
  for (const auto character : decodeUtf8(plain)) {
    if (isControl(character)) {
      std::array<char, 8> escaped;
      std::snprintf(escaped.data(), escaped.size(), "\\u%04x", static_cast<unsigned>(character));
      text += escaped.data();
    } else {
      appendUtf8(text, character);
    }
  }
  return text;
}

}  // namespace

std::string jsonText(const Value& value) {
  return dump(toJson(value));
}

std::string jsonText(const NamedValues& values) {
  Json object = Json::object();
  for (const auto& [name, value] : values)
    object[std::string(name)] = value ? toJson(*value) : Json();
  return dump(object);
}

std::string jsonLine(const Report& report, std::chrono::sys_time<std::chrono::milliseconds> time) {
  Json line = Json::object();
  line["time"] = static_cast<double>(time.time_since_epoch().count()) / 1000;
  line["monitor"] = std::string(report.monitor);
  line["operation"] = std::string(report.operation);
  Json& arguments = line["arguments"] = Json::array();
  for (const auto& argument : report.arguments) {
    arguments.push_back(argument ? toJson(*argument) : Json());
  }
  return dump(line) + '\n';
}

}  // namespace vantile::host
