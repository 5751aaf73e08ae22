#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "vantile/platform/linux/file_stamp.h"

namespace vantile {

/// What a file said when it was last read, read again only when it changed. Not synchronised.
template <class Said>
class PreferenceFile {
 public:
  using Read = std::function<std::optional<std::string>(const std::string& path)>;
  /// Gives nothing for a text that is half-written.
  using Parse = std::optional<Said> (*)(std::string_view text);

  /// Of the file at `path`, or null when there is none. One that is half-written says what it said
  /// before, or what a `Said` of no file is. Valid until the next call.
  const Said* read(const std::string& path, Parse parse, const Read& read) {
    const auto stamp = stampOf(path);
    if (!stamp) return nullptr;
    if (stamp == stamp_) return &said_;
    // The stamp is older than the text: a change in between shows as a newer one next time.
    const auto text = read(path);
    if (!text) return nullptr;
    stamp_ = stamp;
    if (auto said = parse(*text)) said_ = std::move(*said);
    return &said_;
  }

 private:
  std::optional<FileStamp> stamp_;  // when it was read
  Said said_ = {};
};

}  // namespace vantile
