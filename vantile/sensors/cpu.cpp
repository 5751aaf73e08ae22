#include "vantile/sensors/cpu.h"

#include <algorithm>
#include <utility>

#include "vantile/foundation/guard.h"
#include "vantile/sensors/sensors_ports.h"
#include "vantile/sensors/shared_cpu_monitor.h"
#include "vantile/sensors/smc.h"
#include "vantile/utility/strings.h"

namespace vantile {
namespace {

constexpr std::uint64_t lastInMegahertz = 1'000'000'000;

/// The growth of a counter; negative for one that went backwards.
std::int64_t growth(std::uint64_t prior, std::uint64_t now) {
  return static_cast<std::int64_t>(now - prior);
}

/// The part that `ticks` are of `total`. Both count as unsigned, so that what went backwards shows
/// as a huge part.
float part(std::int64_t ticks, std::int64_t total) {
  return static_cast<float>(static_cast<std::uint64_t>(ticks)) /
         static_cast<float>(static_cast<std::uint64_t>(total));
}

/// Above 0, or nothing. The connection is the process's, so monitors take turns.
std::optional<double> processorTemperature() {
  static auto& turn = *new std::mutex;
  const std::lock_guard lock(turn);
  if (SMCOpen() != 0) return std::nullopt;
  const double celsius = SMCGetTemperature("TC0P");
  SMCClose();
  return celsius > 0 ? std::optional(celsius) : std::nullopt;
}

std::string withUnit(float number, const char* unit) {
  return twoDecimals(static_cast<double>(number)) + unit;
}

}  // namespace

SharedInstance<CPUStatus>& sharedCpuMonitor() {
  static auto& instance = *new SharedInstance<CPUStatus>;
  return instance;
}

std::shared_ptr<CPUStatus> CPUStatus::singleton() {
  return sharedCpuMonitor().get([] { return init(); });
}

std::shared_ptr<CPUStatus> CPUStatus::init() {
  const std::shared_ptr<CPUStatus> monitor(new CPUStatus(SensorsPorts::installed()));
  return monitor->begin() ? monitor : nullptr;
}

CPUStatus::CPUStatus(SensorsPorts ports)
    : ports_(std::make_unique<const SensorsPorts>(std::move(ports))) {}

CPUStatus::~CPUStatus() = default;

bool CPUStatus::begin() {
  setCpuName(getCPUName());
  setCpuSpeed(getCPUSpeed());
  setNumberOfCPUs(static_cast<std::uint32_t>(getNumberOfCPUs()));
  auto ticks = ports_->processors->ticks();
  if (!ticks) return false;
  priorCPUTicks = std::move(*ticks);
  setFreshInterval(1);
  return true;
}

void CPUStatus::updateInfo(const Timer*) {
  guarded("a processor sample", [this] { sample(); });
}

void CPUStatus::sample() {
  const auto finishedBefore = samples_.load();
  auto ticks = ports_->processors->ticks();
  if (!ticks) return;
  const SampleLock::Scope sampling(CPUUsageLock);
  if (!sampling) return;
  // While this thread waited, another one sampled: what was read is older than what it reported,
  // and the counters would seem to run backwards.
  if (samples_.load() != finishedBefore) ticks = ports_->processors->ticks();
  if (!ticks) return;
  account(*ticks);
  ++samples_;
  reportUsage();
  reportTasks();
  reportLoad();
  reportTemperature();
}

/// Keeps the buffer at the size of the start: processors beyond it are left out.
void CPUStatus::account(const std::vector<ProcessorTicks>& ticks) {
  cpusInfo.clear();
  const auto cores = std::min(ticks.size(), priorCPUTicks.size());
  for (std::size_t core = 0; core < cores; ++core) {
    cpusInfo.push_back(since(priorCPUTicks[core], ticks[core]));
    priorCPUTicks[core] = ticks[core];
  }
}

/// A system counter that wrapped or went backwards shows its wrapped growth, any other a negative
/// one: hosts know both.
CPUStatus::CoreTicks CPUStatus::since(const ProcessorTicks& prior, const ProcessorTicks& now) {
  CoreTicks ticks;
  ticks.system = static_cast<std::uint32_t>(now.system - prior.system);
  ticks.user = growth(prior.user, now.user) + growth(prior.nice, now.nice);
  ticks.idle = growth(prior.idle, now.idle);
  ticks.total = ticks.user + ticks.system + ticks.idle;
  if (ticks.total == 0) ticks.total = 1;
  return ticks;
}

template <class Operation, class... Arguments>
void CPUStatus::report(Operation CPUDelegate::*operation, Arguments... arguments) {
  tell(delegate(), operation, arguments...);  // which may be another one after each call
}

void CPUStatus::reportUsage() {
  if (cpusInfo.empty()) return;
  CoreTicks sum;
  std::uint32_t core = 0;
  for (const auto& ticks : cpusInfo) {
    report(&CPUDelegate::cpuUsedWithCoreWithSystemWithUserWithIdle, core++,
           part(ticks.system, ticks.total), part(ticks.user, ticks.total),
           part(ticks.idle, ticks.total));
    sum.system += ticks.system;
    sum.user += ticks.user;
    sum.idle += ticks.idle;
    sum.total += ticks.total;
  }
  report(&CPUDelegate::cpuUsedWithSystemWithUserWithIdle, part(sum.system, sum.total),
         part(sum.user, sum.total), part(sum.idle, sum.total));
}

void CPUStatus::reportTasks() {
  if (!implements(delegate(), &CPUDelegate::processorWithTaskCountWithThreadCount)) return;
  if (const auto counts = ports_->processors->tasks())
    report(&CPUDelegate::processorWithTaskCountWithThreadCount, counts->tasks, counts->threads);
}

void CPUStatus::reportLoad() {
  if (!implements(delegate(), &CPUDelegate::loadAverageWith1mWith5mWith15m)) return;
  const auto averages = ports_->processors->loadAverages();
  if (averages.size() != 3) return;
  report(&CPUDelegate::loadAverageWith1mWith5mWith15m, static_cast<float>(averages[0]),
         static_cast<float>(averages[1]), static_cast<float>(averages[2]));
}

void CPUStatus::reportTemperature() {
  if (const auto celsius = processorTemperature())
    report(&CPUDelegate::cpuWithTemperature, *celsius);
}

std::optional<std::string> CPUStatus::cpuName() const {
  const std::lock_guard lock(propertyLock_);
  return _cpuName;
}

void CPUStatus::setCpuName(std::optional<std::string> name) {
  const std::lock_guard lock(propertyLock_);
  _cpuName = std::move(name);
}

std::optional<std::string> CPUStatus::cpuSpeed() const {
  const std::lock_guard lock(propertyLock_);
  return _cpuSpeed;
}

void CPUStatus::setCpuSpeed(std::optional<std::string> speed) {
  const std::lock_guard lock(propertyLock_);
  _cpuSpeed = std::move(speed);
}

std::string CPUStatus::getCPUName() const {
  return "Intel";
}

std::optional<std::string> CPUStatus::getCPUSpeed() const {
  const auto hertz = ports_->processors->frequency();
  if (!hertz) return std::nullopt;
  const auto rate = static_cast<float>(*hertz);
  if (*hertz <= lastInMegahertz) return withUnit(rate / 1e6f, " MHz");
  return withUnit(rate / 1e9f, " GHz");
}

std::int32_t CPUStatus::getNumberOfCPUs() const {
  const auto count = ports_->processors->count().value_or(1);
  return std::max(static_cast<std::int32_t>(count), 1);
}

}  // namespace vantile
