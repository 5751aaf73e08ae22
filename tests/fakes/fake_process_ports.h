#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "vantile/process/process_ports.h"

namespace vantile::testing {

/// Applications that a test launches.
class FakeLaunchedApplications final : public LaunchedApplications {
 public:
  std::optional<std::vector<LaunchedApplication>> list() override {
    ++lists;
    if (onList) onList();
    return applications;
  }

  std::optional<std::vector<LaunchedApplication>> applications;  ///< nothing: no answer
  std::function<void()> onList;
  void rest() override { ++rests; }

  int lists = 0, rests = 0;
};

/// A tool that prints what a test says.
class FakeProcessLister final : public ProcessLister {
 public:
  std::optional<ProcessListing> run(const std::string& pids, const std::string& columns) override {
    requests.push_back(pids + " " + columns);
    if (refuses) return std::nullopt;
    return ProcessListing{exitStatus, output};
  }

  bool refuses = false;
  std::int32_t exitStatus = 1;
  std::string output;
  std::vector<std::string> requests;
};

/// Hands out what a test compiled, and keeps what was asked for.
class FakeTextPatterns final : public TextPatterns {
 public:
  std::shared_ptr<const TextPattern> compile(std::string_view pattern) override {
    compiled.emplace_back(pattern);
    return refuses ? nullptr : systemTextPatterns()->compile(pattern);
  }

  bool refuses = false;
  std::vector<std::string> compiled;
};

/// While it lives, the process monitor stands on fakes.
class FakeProcessPorts {
 public:
  FakeProcessPorts() : before_(ProcessPorts::installed()) {
    ProcessPorts::installed() = {applications, lister, patterns};
  }
  ~FakeProcessPorts() { ProcessPorts::installed() = before_; }
  FakeProcessPorts(const FakeProcessPorts&) = delete;
  FakeProcessPorts& operator=(const FakeProcessPorts&) = delete;

  const std::shared_ptr<FakeLaunchedApplications> applications =
      std::make_shared<FakeLaunchedApplications>();
  const std::shared_ptr<FakeProcessLister> lister = std::make_shared<FakeProcessLister>();
  const std::shared_ptr<FakeTextPatterns> patterns = std::make_shared<FakeTextPatterns>();

 private:
  const ProcessPorts before_;
};

}  // namespace vantile::testing
