#include "vantile/power/time_text.h"

#include <array>
#include <cstddef>

namespace vantile {
namespace {

bool isDigit(char byte) {
  return byte >= '0' && byte <= '9';
}

bool takePrefix(std::string_view& text, std::string_view prefix) {
  if (!text.starts_with(prefix)) return false;
  text.remove_prefix(prefix.size());
  return true;
}

std::string padded(std::int64_t number, std::size_t width, char padding) {
  auto text = std::to_string(number);
  if (text.size() >= width) return text;
  const std::size_t sign = padding == '0' && number < 0 ? 1 : 0;  // zeros stand behind it
  return text.insert(sign, width - text.size(), padding);
}

/// One field of a format.
struct Field {
  std::size_t place = 0;  ///< 1 or 2; 0 where it names none
  std::size_t width = 0;
  char padding = ' ';
};

/// Takes the field behind a "%"; nothing for one that is of another kind.
std::optional<Field> takeField(std::string_view& format) {
  Field field;
  for (const std::size_t place : {std::size_t{1}, std::size_t{2}})
    if (takePrefix(format, place == 1 ? "1$" : "2$")) field.place = place;
  if (takePrefix(format, "0")) field.padding = '0';
  if (!format.empty() && isDigit(format.front())) {
    field.width = static_cast<std::size_t>(format.front() - '0');
    format.remove_prefix(1);
  }
  for (const std::string_view kind : {"ld", "li", "lld", "lli"})
    if (takePrefix(format, kind)) return field;
  return std::nullopt;
}

}  // namespace

std::string timeText(std::int64_t hours, std::int64_t minutes) {
  return std::to_string(hours) + ":" + padded(minutes, 2, '0');
}

std::optional<std::string> timeText(std::string_view format, std::int64_t hours,
                                    std::int64_t minutes) {
  std::string text;
  std::array<int, 2> used = {};
  std::size_t inOrder = 0, byPlace = 0;
  while (!format.empty()) {
    const auto percent = format.find('%');
    text.append(format.substr(0, percent));
    if (percent == format.npos) break;
    format.remove_prefix(percent + 1);
    if (takePrefix(format, "%")) {
      text.push_back('%');
      continue;
    }
    const auto field = takeField(format);
    if (!field) return std::nullopt;
    const auto place = field->place == 0 ? ++inOrder : (++byPlace, field->place);
    if (place > used.size()) return std::nullopt;
    ++used[place - 1];
    text += padded(place == 1 ? hours : minutes, field->width, field->padding);
  }
  const bool mixed = inOrder > 0 && byPlace > 0;
  return !mixed && used[0] == 1 && used[1] == 1 ? std::optional(std::move(text)) : std::nullopt;
}

}  // namespace vantile
