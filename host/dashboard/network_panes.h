#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "dashboard/history.h"
#include "dashboard/pane.h"
#include "report.h"

namespace vantile::host {

/// One network service, as far as it is told.
struct ServiceRow {
  std::string name, device, address, router, dns;
  bool isPrimary = false, isActive = false;
  std::optional<std::uint64_t> bitsPerSecond;  ///< of the link
  std::optional<double> received, sent;        ///< bytes a second, lately
  double peak = 0;                             ///< highest of both since it is there
};

/// What the network monitor told so far.
class NetworkFigures {
 public:
  void take(const Report& report);

  bool known() const { return known_; }
  const std::vector<ServiceRow>& rows() const { return rows_; }
  /// The service that the graph shows: the primary one, else the first that is active; null where
  /// there is none.
  const ServiceRow* shown() const;

  History received, sent;  ///< bytes a second of the service that was shown

 private:
  bool known_ = false;
  std::vector<ServiceRow> rows_;
};

/// The network services, a line each, and a second one with router and name servers.
class ServicesPane final : public Pane {
 public:
  explicit ServicesPane(std::shared_ptr<const NetworkFigures> figures)
      : figures_(std::move(figures)) {}
  std::string title() const override { return "Network"; }
  std::string note() const override;
  PaneRows rows() const override;
  void draw(Region region, std::int32_t interval) const override;

 private:
  std::shared_ptr<const NetworkFigures> figures_;
};

/// What the primary service moved lately: received above, sent below.
class ThroughputPane final : public Pane {
 public:
  explicit ThroughputPane(std::shared_ptr<const NetworkFigures> figures)
      : figures_(std::move(figures)) {}
  std::string title() const override { return "Throughput"; }
  std::string note() const override;
  PaneRows rows() const override { return {2, 6, true}; }
  void draw(Region region, std::int32_t interval) const override;

 private:
  std::shared_ptr<const NetworkFigures> figures_;
};

}  // namespace vantile::host
