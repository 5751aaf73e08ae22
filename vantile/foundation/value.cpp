#include "vantile/foundation/value.h"

#include <algorithm>
#include <limits>

namespace vantile {

std::optional<std::uint64_t> Value::uint64() const noexcept {
  if (const auto* wide = as<std::uint64_t>()) return *wide;
  if (const auto* narrow = as<std::uint32_t>()) return *narrow;
  const auto number = int64();
  if (number && *number >= 0) return static_cast<std::uint64_t>(*number);
  return std::nullopt;
}

std::optional<std::int64_t> Value::int64() const noexcept {
  if (const auto* wide = as<std::int64_t>()) return *wide;
  if (const auto* narrow = as<std::int32_t>()) return *narrow;
  if (const auto* narrow = as<std::uint32_t>()) return *narrow;
  constexpr auto largest = std::numeric_limits<std::int64_t>::max();
  const auto* wide = as<std::uint64_t>();
  if (wide && *wide <= static_cast<std::uint64_t>(largest)) return static_cast<std::int64_t>(*wide);
  return std::nullopt;
}

std::optional<double> Value::number() const noexcept {
  if (const auto* real = as<double>()) return *real;
  if (const auto* wide = as<std::uint64_t>()) return static_cast<double>(*wide);
  if (const auto integer = int64()) return static_cast<double>(*integer);
  return std::nullopt;
}

bool operator==(const Value& a, const Value& b) {
  if (a.held_.index() != b.held_.index()) return false;
  return std::visit(
      [&b](const auto& left) {
        using Held = std::decay_t<decltype(left)>;
        const auto& right = std::get<Held>(b.held_);
        if constexpr (requires { *left; }) {
          return left == right || (left && right && *left == *right);
        } else {
          return left == right;
        }
      },
      a.held_);
}

Value* Dictionary::slot(std::string_view key) noexcept {
  const auto entry = std::find_if(entries_.begin(), entries_.end(),
                                  [key](const Entry& each) { return each.key() == key; });
  return entry == entries_.end() ? nullptr : &entry->value;
}

void Dictionary::set(Key key, Value value) {
  if (Value* const existing = slot(key.name())) {
    *existing = std::move(value);
  } else {
    entries_.emplace_back(key, std::move(value));
  }
}

void Dictionary::setOwned(std::string key, Value value) {
  if (Value* const existing = slot(key)) {
    *existing = std::move(value);
  } else {
    entries_.emplace_back(std::move(key), std::move(value));
  }
}

void Dictionary::remove(std::string_view key) {
  std::erase_if(entries_, [key](const Entry& entry) { return entry.key() == key; });
}

const Value* Dictionary::find(std::string_view key) const noexcept {
  return const_cast<Dictionary*>(this)->slot(key);
}

std::optional<std::uint64_t> Dictionary::uint64(std::string_view key) const noexcept {
  const Value* const value = find(key);
  return value ? value->uint64() : std::nullopt;
}

std::optional<std::int64_t> Dictionary::int64(std::string_view key) const noexcept {
  const Value* const value = find(key);
  return value ? value->int64() : std::nullopt;
}

std::optional<double> Dictionary::number(std::string_view key) const noexcept {
  const Value* const value = find(key);
  return value ? value->number() : std::nullopt;
}

std::optional<bool> Dictionary::boolean(std::string_view key) const noexcept {
  const Value* const value = find(key);
  const bool* const held = value ? value->as<bool>() : nullptr;
  return held ? std::optional(*held) : std::nullopt;
}

const std::string* Dictionary::text(std::string_view key) const noexcept {
  const Value* const value = find(key);
  return value ? value->as<std::string>() : nullptr;
}

bool operator==(const Dictionary& a, const Dictionary& b) {
  return a.size() == b.size() && std::all_of(a.begin(), a.end(), [&b](const auto& entry) {
           const Value* const other = b.find(entry.key());
           return other && *other == entry.value;
         });
}

}  // namespace vantile
