// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include "kvbase/platform/locale_api.h"

namespace KV_1_1 {
namespace testing {

// Gives the calling thread a locale for a scope, by the native backend.
class ThreadLocale {
 public:
  explicit ThreadLocale(ulong32 locale) : previous_(platform::nativeLocales().threadLocale()) {
    EXPECT_TRUE(platform::nativeLocales().setThreadLocale(locale)) << locale;
  }
  ~ThreadLocale() { EXPECT_TRUE(platform::nativeLocales().setThreadLocale(previous_)) << previous_; }
  ThreadLocale(ThreadLocale const&) = delete;
  ThreadLocale& operator=(ThreadLocale const&) = delete;

 private:
  ulong32 const previous_;
};

}  // namespace testing
}  // namespace KV_1_1
