// SPDX-License-Identifier: MIT
//
// Conversion of file times between units of 100 ns since the beginning of 1601 and the seconds and nanoseconds of this
// system.
#pragma once

#include <time.h>

#include <cstdint>

namespace KV_1_1 {
namespace platform {

constexpr std::int64_t kSecondsFrom1601To1970 = 11644473600;
constexpr std::int64_t kUnitsPerSecond = 10000000;

// 0 for any time before 1601.
constexpr std::uint64_t fileTimeOf(std::int64_t seconds, std::int64_t nanoseconds) {
  std::int64_t const since1601 = seconds + kSecondsFrom1601To1970;
  return since1601 < 0 ? 0 : static_cast<std::uint64_t>(since1601 * kUnitsPerSecond + nanoseconds / 100);
}

inline timespec timespecOf(std::uint64_t fileTime) {
  timespec time;
  time.tv_sec = static_cast<time_t>(fileTime / kUnitsPerSecond) - kSecondsFrom1601To1970;
  time.tv_nsec = static_cast<long>(fileTime % kUnitsPerSecond) * 100;
  return time;
}

}  // namespace platform
}  // namespace KV_1_1
