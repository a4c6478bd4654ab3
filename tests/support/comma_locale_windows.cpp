// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <clocale>

#include "tests/support/comma_locale.h"

namespace KV_1_1 {
namespace testing {

struct CommaLocale::Store {};

CommaLocale::CommaLocale() {
  EXPECT_NE(std::setlocale(LC_NUMERIC, "German"), nullptr);
}

CommaLocale::~CommaLocale() {
  std::setlocale(LC_NUMERIC, "C");
}

}  // namespace testing
}  // namespace KV_1_1
