#pragma once

#include <chrono>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "vantile/foundation/api.h"

namespace vantile {

class Dictionary;
class Value;

/// A moment in Unix time. Where an owner means "the same date object" it compares addresses, so
/// dates travel as `std::shared_ptr<const Date>`.
struct Date {
  std::chrono::sys_time<std::chrono::nanoseconds> time;
  friend auto operator<=>(const Date&, const Date&) = default;
};

/// A picture that the platform can show: its name in the icon theme, the file it comes from, and
/// the platform's own object. Any of the three may be empty.
struct Image {
  std::string name;
  std::string file;
  std::shared_ptr<void> handle;
  friend bool operator==(const Image&, const Image&) = default;
};

using Array = std::vector<Value>;

/// One value of a result: a number that keeps its width and sign, a boolean, text, a date, an
/// image, an array or a dictionary. Text is bytes; names of files pass through unchanged. Arrays
/// and dictionaries are shared: copying a Value copies a reference to them.
class Value {
 public:
  using Variant =
      std::variant<std::uint64_t, std::int64_t, std::uint32_t, std::int32_t, double, bool,
                   std::string, std::shared_ptr<const Date>, std::shared_ptr<const Image>,
                   std::shared_ptr<Array>, std::shared_ptr<Dictionary>>;

  /// Integers keep their width and sign; narrower ones widen to 32 bits.
  template <std::integral Integer>
  Value(Integer number) : held_(widened(number)) {}           // NOLINT(google-explicit-constructor)
  Value(double number) : held_(number) {}                     // NOLINT(google-explicit-constructor)
  Value(std::string text) : held_(std::move(text)) {}         // NOLINT
  Value(std::string_view text) : held_(std::string(text)) {}  // NOLINT
  Value(const char* text) : held_(std::string(text ? text : "")) {}                // NOLINT
  Value(std::shared_ptr<const Date> date) : held_(std::move(date)) {}              // NOLINT
  Value(std::shared_ptr<const Image> image) : held_(std::move(image)) {}           // NOLINT
  Value(std::shared_ptr<Array> array) : held_(std::move(array)) {}                 // NOLINT
  Value(std::shared_ptr<Dictionary> dictionary) : held_(std::move(dictionary)) {}  // NOLINT

  /// The value as exactly that alternative, or null.
  template <class Held>
  const Held* as() const noexcept {
    return std::get_if<Held>(&held_);
  }

  /// The number, where it is one that fits without loss; nothing otherwise.
  VANTILE_API std::optional<std::uint64_t> uint64() const noexcept;
  VANTILE_API std::optional<std::int64_t> int64() const noexcept;
  /// Any number as a double. 64-bit integers may lose low digits.
  VANTILE_API std::optional<double> number() const noexcept;

  const Variant& held() const noexcept { return held_; }

  /// Equal when the alternatives and their contents are; shared contents are compared, not
  /// addresses.
  VANTILE_API friend bool operator==(const Value& a, const Value& b);

 private:
  template <std::integral Integer>
  static Variant widened(Integer number) {
    if constexpr (std::is_same_v<Integer, bool>) {
      return number;
    } else if constexpr (std::is_unsigned_v<Integer>) {
      if constexpr (sizeof(Integer) <= 4) return static_cast<std::uint32_t>(number);
      return static_cast<std::uint64_t>(number);
    } else {
      if constexpr (sizeof(Integer) <= 4) return static_cast<std::int32_t>(number);
      return static_cast<std::int64_t>(number);
    }
  }

  Variant held_;
};

/// The name of a dictionary's entry, made from a literal: entries refer to its characters, so a
/// result built with such keys copies no names.
class Key {
 public:
  template <std::size_t Size>
  consteval Key(const char (&name)[Size]) : name_(name, Size - 1) {}  // NOLINT
  constexpr std::string_view name() const noexcept { return name_; }
  constexpr operator std::string_view() const noexcept { return name_; }  // NOLINT

 private:
  std::string_view name_;
};

/// Text keys mapped to values, in the order in which they were first set. Made for results of a
/// few dozen entries: a look-up walks the entries. Copying copies the entries and shares nested
/// arrays and dictionaries. Not synchronised.
class Dictionary {
 public:
  class Entry {
   public:
    Entry(Key key, Value held) : literal_(key.name()), value(std::move(held)) {}
    Entry(std::string key, Value held) : owned_(std::move(key)), value(std::move(held)) {}
    std::string_view key() const noexcept { return literal_.data() ? literal_ : owned_; }

   private:
    std::string_view literal_;  // of static storage; no data when the entry owns its key
    std::string owned_;

   public:
    Value value;
  };

  Dictionary() = default;

  /// Makes room for `entries` entries in one allocation.
  void reserve(std::size_t entries) { entries_.reserve(entries); }

  /// Sets or replaces an entry; a replaced one keeps its place.
  VANTILE_API void set(Key key, Value value);
  template <std::same_as<std::string> Text>  // not what merely converts to one: a literal is a Key
  void set(Text key, Value value) {
    setOwned(std::move(key), std::move(value));
  }
  /// Sets the entry where there is a value; an absent value leaves the key out.
  template <class Held>
  void set(Key key, const std::optional<Held>& value) {
    if (value) set(key, Value(*value));
  }
  VANTILE_API void remove(std::string_view key);

  /// The value under `key`, or null. Valid until the dictionary is changed.
  VANTILE_API const Value* find(std::string_view key) const noexcept;
  bool contains(std::string_view key) const noexcept { return find(key) != nullptr; }

  /// The value under `key` where it is of that kind, nothing otherwise.
  VANTILE_API std::optional<std::uint64_t> uint64(std::string_view key) const noexcept;
  VANTILE_API std::optional<std::int64_t> int64(std::string_view key) const noexcept;
  VANTILE_API std::optional<double> number(std::string_view key) const noexcept;
  VANTILE_API std::optional<bool> boolean(std::string_view key) const noexcept;
  VANTILE_API const std::string* text(std::string_view key) const noexcept;

  std::size_t size() const noexcept { return entries_.size(); }
  bool empty() const noexcept { return entries_.empty(); }
  std::vector<Entry>::const_iterator begin() const noexcept { return entries_.begin(); }
  std::vector<Entry>::const_iterator end() const noexcept { return entries_.end(); }
  /// Values may be replaced on the way, keys not.
  std::vector<Entry>::iterator begin() noexcept { return entries_.begin(); }
  std::vector<Entry>::iterator end() noexcept { return entries_.end(); }

  /// Equal when both hold equal values under the same keys, in whatever order.
  VANTILE_API friend bool operator==(const Dictionary& a, const Dictionary& b);

 private:
  Value* slot(std::string_view key) noexcept;
  VANTILE_API void setOwned(std::string key, Value value);

  std::vector<Entry> entries_;
};

}  // namespace vantile
