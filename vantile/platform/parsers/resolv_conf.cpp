#include "vantile/platform/parsers/resolv_conf.h"

#include <algorithm>
#include <optional>

#include "vantile/platform/parsers/text.h"

namespace vantile {
namespace {

/// What stands before the next `separator`, which is taken off with it.
std::string_view takeField(std::string_view& text, char separator) {
  const auto end = text.find(separator);
  const auto field = text.substr(0, end);
  text.remove_prefix(end == text.npos ? text.size() : end + 1);
  return field;
}

bool hasOnly(std::string_view text, std::string_view characters) {
  return !text.empty() && text.find_first_not_of(characters) == text.npos;
}

bool isIPv4(std::string_view text) {
  if (text.ends_with('.')) return false;
  int count = 0;
  for (; !text.empty(); ++count) {
    const auto part = takeField(text, '.');
    const auto number = leadingNumber(part);
    const bool octal = part.size() > 1 && part[0] == '0';  // to some, so to be left out
    if (!hasOnly(part, "0123456789") || octal || !number || *number > 255) return false;
  }
  return count == 4;
}

/// How many groups of 16 bits that is: numbers between colons, the last one perhaps an IPv4
/// address. Nothing where it is anything else.
std::optional<int> groupsIn(std::string_view text) {
  if (text.ends_with(':')) return std::nullopt;
  int count = 0;
  while (!text.empty()) {
    const auto group = takeField(text, ':');
    const bool number = group.size() <= 4 && hasOnly(group, "0123456789abcdefABCDEF");
    if (!number && !(text.empty() && isIPv4(group))) return std::nullopt;
    count += number ? 1 : 2;
  }
  return count;
}

/// With the link that it holds on, where it names one: "fe80::1%eth0".
bool isIPv6(std::string_view text) {
  const auto percent = text.find('%');
  const auto link = text.substr(std::min(percent, text.size()));
  const bool usable = std::all_of(link.begin(), link.end(), [](char each) {
    const auto byte = static_cast<unsigned char>(each);
    return byte > ' ' && byte != 0x7f;
  });
  if (!usable || link.size() == 1) return false;
  text = text.substr(0, percent);
  const auto gap = text.find("::");
  if (gap == text.npos) return groupsIn(text) == 8;
  const auto before = groupsIn(text.substr(0, gap)), after = groupsIn(text.substr(gap + 2));
  return before && after && *before + *after < 8 && text.find('.') > gap;
}

}  // namespace

std::vector<std::string> parseResolvConf(std::string_view text) {
  std::vector<std::string> servers;
  while (!text.empty()) {
    auto line = takeLine(text);
    if (line.ends_with('\r')) line.remove_suffix(1);
    // The name begins the line; behind the address everything is passed over.
    const auto fields =
        line.starts_with("nameserver") ? words(line) : std::vector<std::string_view>();
    if (fields.size() < 2 || fields[0] != "nameserver" || !(isIPv4(fields[1]) || isIPv6(fields[1])))
      continue;
    std::string server(fields[1]);
    if (std::find(servers.begin(), servers.end(), server) == servers.end())
      servers.push_back(std::move(server));
  }
  return servers;
}

bool areStubs(const std::vector<std::string>& servers) {
  return !servers.empty() && std::all_of(servers.begin(), servers.end(), [](const auto& server) {
    return server == "127.0.0.53" || server == "127.0.0.54";
  });
}

}  // namespace vantile
