// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>

#include <cstring>
#include <string>
#include <vector>

#include "tests/shared/modules/module_report.h"

int main(int count, char** arguments) {
  if (count > 1 && std::strcmp(arguments[1], "--report") == 0) {
    return KV_1_1::testing::writeReport(std::vector<std::string>(arguments + 2, arguments + count));
  }
  testing::InitGoogleMock(&count, arguments);
  return RUN_ALL_TESTS();
}
