#include "vantile/platform/parsers/name_list.h"

#include <algorithm>
#include <utility>

namespace vantile {

void NameList::append(std::string_view name) {
  add(name);
  add(std::string_view("\0", 1));
}

void NameList::take(NameList other) {
  for (auto& piece : other.pieces_) add(std::exchange(piece, std::string()));
}

void NameList::copy(std::size_t from, char* to, std::size_t size) const {
  for (std::size_t done = 0; done < size;) {
    const auto at = from + done;
    done += pieces_[at / pieceSize].copy(to + done, size - done, at % pieceSize);
  }
}

void NameList::add(std::string_view names) {
  while (!names.empty()) {
    if (pieces_.size() * pieceSize == size_) pieces_.emplace_back();
    if (pieces_.size() > 1) pieces_.back().reserve(pieceSize);  // the first one may stay small
    const auto part = names.substr(0, pieceSize - size_ % pieceSize);
    pieces_.back().append(part);
    size_ += part.size();
    names.remove_prefix(part.size());
  }
}

}  // namespace vantile
