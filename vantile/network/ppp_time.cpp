#include "vantile/network/ppp_time.h"

#include <algorithm>

namespace vantile {
namespace {

constexpr std::chrono::seconds longestAbsence{30};

thread_local std::optional<std::chrono::nanoseconds> sharedTime;

}  // namespace

SharedPppTime::SharedPppTime() : outermost_(!sharedTime) {
  if (outermost_) sharedTime = longestPppOperation;
}

SharedPppTime::~SharedPppTime() {
  if (outermost_) sharedTime.reset();
}

std::chrono::nanoseconds SharedPppTime::left() {
  return sharedTime.value_or(longestPppOperation);
}

void SharedPppTime::spend(std::chrono::nanoseconds time) {
  if (sharedTime) *sharedTime = std::max(*sharedTime - time, std::chrono::nanoseconds(0));
}

bool PppAbsence::lasts(Moment now) const {
  const std::lock_guard lock(lock_);
  return until_ && now < *until_;
}

void PppAbsence::begin(Moment now) {
  const std::lock_guard lock(lock_);
  until_ = now + longestAbsence;
}

void PppAbsence::forget() {
  const std::lock_guard lock(lock_);
  until_.reset();
}

PppAbsence& pppAbsence() {
  static auto& absence = *new PppAbsence;
  return absence;
}

}  // namespace vantile
