// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

// Skips the test unless the condition holds, which the reason names: "needs ...". `./kv test` lists each skipped test.
//
// A test is skipped only where the machine withholds what no test can bring along: rights that containers withhold even
// from root, a feature of the kernel or of the file system of temporary files, a device that the system does not have.
// Everything else that is missing is a failure.
#define KVBASE_SKIP_UNLESS(condition, reason) \
  if (condition) {                            \
  } else                                      \
    GTEST_SKIP() << "needs " reason
