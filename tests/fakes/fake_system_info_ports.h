#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "vantile/platform/parsers/text_pieces.h"
#include "vantile/sysinfo/system_info_ports.h"

namespace vantile::testing {

/// Facts of a machine that a test makes up. Questions are logged by their names.
class FakeSystemFacts final : public SystemFacts {
 public:
  explicit FakeSystemFacts(std::vector<std::string>& log) : log_(log) {}

  std::optional<std::string> computerName() override { return told("computerName", computer); }
  std::optional<std::string> hostName() override { return told("hostName", host); }
  std::optional<std::string> userName() override { return told("userName", user); }
  std::optional<std::string> fullUserName() override { return told("fullUserName", fullUser); }
  std::optional<std::int64_t> operatingSystem() override { return told("operatingSystem", system); }
  std::optional<std::uint64_t> physicalMemory() override { return told("physicalMemory", memory); }
  std::optional<std::string> versionText() override { return told("versionText", version); }

  std::optional<std::string> computer, host, user, fullUser, version;
  std::optional<std::int64_t> system;
  std::optional<std::uint64_t> memory;

 private:
  template <class Fact>
  Fact told(const char* question, const Fact& fact) {
    log_.emplace_back(question);
    return fact;
  }

  std::vector<std::string>& log_;
};

/// Entries by name. The name of each that was asked for is logged.
class FakeSystemEntries final : public SystemEntries {
 public:
  explicit FakeSystemEntries(std::vector<std::string>& log) : log_(log) {}

  std::optional<std::string> registryText(std::string_view key) override {
    return found(registry, key);
  }
  std::optional<std::string> controlText(std::string_view name) override {
    return found(texts, name);
  }
  std::optional<std::uint64_t> controlNumber(std::string_view name) override {
    return found(numbers, name);
  }

  std::map<std::string, std::string, std::less<>> registry, texts;
  std::map<std::string, std::uint64_t, std::less<>> numbers;

 private:
  template <class Entries>
  std::optional<typename Entries::mapped_type> found(const Entries& entries,
                                                     std::string_view name) {
    log_.emplace_back(name);
    const auto entry = entries.find(name);
    return entry == entries.end() ? std::nullopt : std::optional(entry->second);
  }

  std::vector<std::string>& log_;
};

/// Knows ASCII's characters; all others are letters.
class AsciiTextPieces final : public TextPieces {
 public:
  std::vector<std::string> alphanumericPieces(std::string_view text) override {
    return piecesBetween(text, [](char32_t character) { return isOther(character); });
  }
  std::vector<std::string> piecesBetweenPunctuation(std::string_view text) override {
    if (givesNoPieces) return {};
    return piecesBetween(text, [](char32_t character) {
      return std::u32string_view(U".,-_()@").find(character) != std::u32string_view::npos;
    });
  }

  bool givesNoPieces = false;

 private:
  static bool isOther(char32_t character) {
    const bool isDigit = character >= U'0' && character <= U'9';
    const bool isLetter = (character >= U'A' && character <= U'Z') ||
                          (character >= U'a' && character <= U'z') || character >= 0x80;
    return !isDigit && !isLetter;
  }
};

/// While it lives, system information stands on fakes.
class FakeSystemInfoPorts {
 public:
  FakeSystemInfoPorts()
      : before_(
            std::exchange(SystemInfoPorts::installed(), SystemInfoPorts{facts, entries, pieces})) {}
  ~FakeSystemInfoPorts() { SystemInfoPorts::installed() = std::move(before_); }
  FakeSystemInfoPorts(const FakeSystemInfoPorts&) = delete;
  FakeSystemInfoPorts& operator=(const FakeSystemInfoPorts&) = delete;

  std::vector<std::string> log;  ///< what was asked for, in order
  std::shared_ptr<FakeSystemFacts> facts = std::make_shared<FakeSystemFacts>(log);
  std::shared_ptr<FakeSystemEntries> entries = std::make_shared<FakeSystemEntries>(log);
  std::shared_ptr<AsciiTextPieces> pieces = std::make_shared<AsciiTextPieces>();

 private:
  SystemInfoPorts before_;
};

}  // namespace vantile::testing
