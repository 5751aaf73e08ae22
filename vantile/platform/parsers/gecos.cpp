#include "vantile/platform/parsers/gecos.h"

namespace vantile {

std::optional<std::string> fullNameIn(std::string_view gecos, std::string_view login) {
  std::string capitalised(login);
  // Login names are ASCII where it matters; other bytes stay.
  if (!login.empty() && login[0] >= 'a' && login[0] <= 'z')
    capitalised[0] = static_cast<char>(login[0] - 'a' + 'A');

  std::string name;
  for (const char byte : gecos.substr(0, gecos.find(','))) {
    if (byte == '&') {
      name += capitalised;
    } else {
      name.push_back(byte);
    }
  }
  const bool isBlank = name.find_first_not_of(" \t") == std::string::npos;
  return isBlank ? std::nullopt : std::optional(std::move(name));
}

}  // namespace vantile
