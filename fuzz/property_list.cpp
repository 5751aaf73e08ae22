#include <plist/plist.h>

#include <algorithm>
#include <cstdlib>

#include "vantile/platform/linux/property_lists.h"
#include "vantile/platform/parsers/property_list_bounds.h"

#include "fuzz/fuzzer.h"

namespace vantile::fuzz {
namespace {

struct Shape {
  std::size_t depth = 0, values = 1;
};

Shape shapeOf(plist_t node) {
  Shape shape;
  const auto add = [&shape](plist_t child) {
    const auto within = shapeOf(child);
    shape.depth = std::max(shape.depth, within.depth);
    shape.values += within.values;
  };
  const auto type = plist_get_node_type(node);
  if (type == PLIST_ARRAY) {
    for (std::uint32_t i = 0; i < plist_array_get_size(node); ++i)
      add(plist_array_get_item(node, i));
  } else if (type == PLIST_DICT) {
    plist_dict_iter position = nullptr;
    plist_dict_new_iter(node, &position);
    plist_t child = nullptr;
    for (plist_dict_next_item(node, position, nullptr, &child); child;
         plist_dict_next_item(node, position, nullptr, &child)) {
      add(child);
      ++shape.values;  // its key
    }
    std::free(position);
  } else {
    return shape;
  }
  ++shape.depth;
  return shape;
}

/// What libplist makes of a list is never more than was told before.
void checkBounds(std::string_view list) {
  const bool isBinary = list.starts_with("bplist");
  // A binary one may be more than memory holds; XML of this length is not.
  if (isBinary && !isWithin({}, list)) return;
  const auto size = static_cast<std::uint32_t>(list.size());
  plist_t root = nullptr;
  if (isBinary)
    plist_from_bin(list.data(), size, &root);
  else
    plist_from_xml(list.data(), size, &root);
  if (!root) return;
  const auto shape = shapeOf(root);
  plist_free(root);
  require(shape.depth == 0 || !isWithin({.depth = shape.depth - 1}, list), "no list is deeper");
  require(!isWithin({.values = shape.values - 1}, list), "no list has more values");
}

/// A list of the printable part of each line, in both forms.
void checkForms(std::string_view input) {
  Dictionary written;
  const plist_t list = plist_new_dict();
  for (const auto line : split(input, '\n')) {
    std::string name(line.substr(0, 100));
    std::erase_if(name, [](char byte) { return byte < ' ' || byte > '~'; });
    const auto number = static_cast<std::int64_t>(name.size()) - 50;
    written.set("k" + name, name.size() % 2 == 0 ? Value(name) : Value(number));
    plist_dict_set_item(list, ("k" + name).c_str(),
                        name.size() % 2 == 0 ? plist_new_string(name.c_str())
                                             : plist_new_uint(static_cast<std::uint64_t>(number)));
  }
  char *xml = nullptr, *binary = nullptr;
  std::uint32_t xmlSize = 0, binarySize = 0;
  plist_to_xml(list, &xml, &xmlSize);
  plist_to_bin(list, &binary, &binarySize);
  for (const auto form : {std::string_view(xml, xmlSize), std::string_view(binary, binarySize)}) {
    const auto read = dictionaryOf(form);
    require(read && *read == written, "a list comes back as it was, in either form");
  }
  std::free(xml);
  std::free(binary);
  plist_free(list);
}

}  // namespace

void consume(std::string_view input) {
  (void)dictionaryOf(input);
  checkBounds(input);
  checkForms(input);
}

}  // namespace vantile::fuzz
