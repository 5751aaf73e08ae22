#include "vantile/platform/parsers/property_list_bounds.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <vector>

namespace vantile {
namespace {

/// The number that `size` bytes at `offset` make up, the first one the highest; nothing where they
/// are not there or too many.
std::optional<std::uint64_t> numberAt(std::string_view bytes, std::uint64_t offset,
                                      std::uint64_t size) {
  if (size > sizeof(std::uint64_t) || size > bytes.size() || offset > bytes.size() - size)
    return std::nullopt;
  std::uint64_t number = 0;
  for (const char byte : bytes.substr(offset, size))
    number = number << 8 | static_cast<unsigned char>(byte);
  return number;
}

/// A binary list: a table of objects, in which arrays and dictionaries refer to others by number.
class BinaryList {
 public:
  BinaryList(const PropertyListBounds& bounds, std::string_view bytes)
      : bounds_(bounds), bytes_(bytes) {}

  bool isWithinBounds();

 private:
  struct Object {
    std::uint64_t values = 0;  // with all that is in it; 0 while it is not known
    std::size_t depth = 0;
    bool open = false;  // being looked into
  };
  struct References {
    std::uint64_t at = 0, count = 0;
    bool nest = false;  // an array's or a dictionary's
  };

  bool readTrailer();
  std::optional<References> referencesOf(std::uint64_t object) const;
  bool measure(std::uint64_t object, std::size_t depth);

  const PropertyListBounds& bounds_;
  const std::string_view bytes_;
  std::uint64_t offsetSize_ = 0, referenceSize_ = 0, root_ = 0, table_ = 0;
  std::vector<Object> objects_;
};

bool BinaryList::readTrailer() {
  constexpr std::size_t trailer = 32, sizes = 6;
  if (bytes_.size() < trailer) return false;
  const auto at = bytes_.size() - trailer;
  offsetSize_ = *numberAt(bytes_, at + sizes, 1);
  referenceSize_ = *numberAt(bytes_, at + sizes + 1, 1);
  const auto objects = *numberAt(bytes_, at + 8, 8);
  root_ = *numberAt(bytes_, at + 16, 8);
  table_ = *numberAt(bytes_, at + 24, 8);
  if (objects > bounds_.values) return false;
  objects_.resize(objects);
  return true;
}

/// Where an object's references stand and how many there are; nothing when it is malformed.
std::optional<BinaryList::References> BinaryList::referencesOf(std::uint64_t object) const {
  const auto offset = numberAt(bytes_, table_ + object * offsetSize_, offsetSize_);
  const auto marker = offset ? numberAt(bytes_, *offset, 1) : std::nullopt;
  if (!marker) return std::nullopt;
  const auto kind = *marker >> 4;
  constexpr unsigned firstContainer = 0xA, dictionary = 0xD;  // between them two kinds of set
  if (kind < firstContainer || kind > dictionary) return References{};
  References references{*offset + 1, *marker & 0xF, true};
  if (references.count == 0xF) {  // the count is an integer object of its own
    const auto sizeMarker = numberAt(bytes_, references.at, 1);
    if (!sizeMarker || *sizeMarker >> 4 != 1) return std::nullopt;
    const auto size = std::uint64_t{1} << (*sizeMarker & 0xF);
    const auto count = numberAt(bytes_, references.at + 1, size);
    if (!count) return std::nullopt;
    references.at += 1 + size;
    references.count = *count;
  }
  if (references.count > bounds_.values) return std::nullopt;
  if (kind == dictionary) references.count *= 2;
  return references;
}

/// Finds out about an object `depth` levels down and all within it. False when they break the
/// bounds, or are malformed where that keeps them from being told.
bool BinaryList::measure(std::uint64_t number, std::size_t depth) {
  if (number >= objects_.size()) return false;
  auto& object = objects_[number];
  if (object.open) return false;  // it is within itself
  if (object.values > 0) return depth + object.depth <= bounds_.depth;
  const auto references = referencesOf(number);
  if (!references) return false;
  object.depth = references->nest ? 1 : 0;
  if (depth + object.depth > bounds_.depth) return false;
  object.open = true;
  std::uint64_t values = 1;
  for (std::uint64_t i = 0; i < references->count; ++i) {
    const auto child = numberAt(bytes_, references->at + i * referenceSize_, referenceSize_);
    if (!child || !measure(*child, depth + 1)) return false;
    values += objects_[*child].values;
    if (values > bounds_.values) return false;
    object.depth = std::max(object.depth, objects_[*child].depth + 1);
  }
  object.open = false;
  object.values = values;
  return true;
}

bool BinaryList::isWithinBounds() {
  return readTrailer() && measure(root_, 0);
}

/// An XML list. Where it is not what a writer of lists makes of it, more is counted rather than
/// less: what stands in comments and the like opens, but does not close.
class XmlList {
 public:
  XmlList(const PropertyListBounds& bounds, std::string_view text) : bounds_(bounds), text_(text) {}

  bool isWithinBounds();

 private:
  bool isAt(std::size_t at, std::string_view literal) const {
    return text_.substr(at, literal.size()) == literal;
  }
  bool countTag(std::size_t at);
  bool beginUnread(std::size_t at);
  bool isEmptyTag(std::size_t at);

  const PropertyListBounds& bounds_;
  const std::string_view text_;
  std::size_t depth_ = 0, values_ = 0;
  std::size_t unreadUntil_ = 0;  // where the comment or the like ends
  std::size_t tagEnd_ = 0;       // of the last tag asked about
};

bool XmlList::isEmptyTag(std::size_t at) {
  if (tagEnd_ <= at) tagEnd_ = std::min(text_.find('>', at), text_.size());
  return text_[tagEnd_ - 1] == '/';
}

/// Counts what the "<" there opens or closes. False when that is too much.
bool XmlList::countTag(std::size_t at) {
  const auto next = text_.substr(at + 1, 1);
  if (next == "!" || next == "?") return at < unreadUntil_ || beginUnread(at);
  if (next == "/") {
    const bool closes = isAt(at, "</array>") || isAt(at, "</dict>");
    if (closes && at >= unreadUntil_ && depth_ > 0) --depth_;
    return true;
  }
  const bool nests = isAt(at, "<array") || isAt(at, "<dict");
  const auto depth = depth_ + (nests ? 1 : 0);
  if (nests && !isEmptyTag(at)) depth_ = depth;
  return ++values_ <= bounds_.values && depth <= bounds_.depth;
}

bool XmlList::beginUnread(std::size_t at) {
  constexpr struct {
    std::string_view begin, end;
  } kinds[] = {{"<!--", "-->"}, {"<![CDATA[", "]]>"}, {"<?", "?>"}};
  for (const auto& kind : kinds) {
    if (!isAt(at, kind.begin)) continue;
    unreadUntil_ = text_.find(kind.end, at + kind.begin.size());
    return true;
  }
  return depth_ == 0;  // a DOCTYPE stands before the list
}

bool XmlList::isWithinBounds() {
  for (auto at = text_.find('<'); at != std::string_view::npos; at = text_.find('<', at + 1))
    if (!countTag(at)) return false;
  return true;
}

}  // namespace

bool isWithin(const PropertyListBounds& bounds, std::string_view list) {
  return list.starts_with("bplist") ? BinaryList(bounds, list).isWithinBounds()
                                    : XmlList(bounds, list).isWithinBounds();
}

}  // namespace vantile
