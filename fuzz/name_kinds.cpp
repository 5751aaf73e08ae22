#include "vantile/platform/parsers/name_kinds.h"

#include "fuzz/fuzzer.h"

namespace vantile::fuzz {

void consume(std::string_view input) {
  const std::string name(input);
  if (const auto key = typeKeyOf(name)) {
    require(name.ends_with(*key), "what decides is the name's end");
    require(key->find('.') != key->npos && !key->ends_with('.'), "it has an extension");
    require(key->size() <= 48, "it is not long");
    for (const char byte : *key) require(byte > ' ' && byte < 127 && byte != '/', "it is plain");
    if (key->size() < name.size()) {
      require(key->starts_with('.'), "a part begins with its dot");
      require(typeKeyOf("another name" + std::string(*key)) == key, "the rest does not matter");
    }
  }
  require(!isAppImage(name) || name.size() > 9, "an application has a name");

  const auto cut = name.size() / 2;
  const auto folder = "/" + name.substr(0, cut), below = folder + "/" + name.substr(cut);
  const InstalledFolders folders({below});
  require(folders.at(below) == Installed::here, "the folder itself");
  require(folders.at(below + "/x") == Installed::here, "what is below it");
  require(folders.at("/") != Installed::none, "all begins at the root");
  require(folders.at(folder) != Installed::none, "the way to it is known");
}

}  // namespace vantile::fuzz
