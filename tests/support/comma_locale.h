// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

namespace KV_1_1 {
namespace testing {

// Gives the C runtime a locale whose decimal point is a comma for a scope. On Windows it is German; elsewhere the locale is
// made for the test, since a machine need not have any.
class CommaLocale {
 public:
  CommaLocale();
  ~CommaLocale();
  CommaLocale(CommaLocale const&) = delete;
  CommaLocale& operator=(CommaLocale const&) = delete;

 private:
  struct Store;
  std::unique_ptr<Store> const store_;
};

}  // namespace testing
}  // namespace KV_1_1
