// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>

#include "tests/platform/linux/environment_variable.h"
#include "tests/support/comma_locale.h"
#include "tests/support/temp_folder.h"

namespace KV_1_1 {
namespace testing {

struct CommaLocale::Store {
  TempFolder folder;
  EnvironmentVariable const locales{"LOCPATH", folder.path().c_str()};
};

CommaLocale::CommaLocale() : store_(new Store) {
  TempFolder const& folder = store_->folder;
  folder.write("source", "LC_NUMERIC\ndecimal_point \"<U002C>\"\nthousands_sep \"\"\ngrouping -1\nEND LC_NUMERIC\n");
  // Its status tells that all other categories are missing.
  std::string const command = "localedef -c -i '" + folder.path("source").string() + "' '" +
                              folder.path("comma").string() + "' >/dev/null 2>&1";
  static_cast<void>(std::system(command.c_str()));
  EXPECT_NE(std::setlocale(LC_NUMERIC, "comma"), nullptr) << command;
}

CommaLocale::~CommaLocale() {
  std::setlocale(LC_NUMERIC, "C");
}

}  // namespace testing
}  // namespace KV_1_1
