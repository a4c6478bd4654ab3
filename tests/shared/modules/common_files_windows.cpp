// SPDX-License-Identifier: MIT
#include "tests/shared/modules/common_files.h"

#include <gtest/gtest.h>

#include <system_error>

#include "kvbase/platform/shell_api.h"

namespace KV_1_1 {
namespace testing {

struct CommonFiles::Place {
  std::filesystem::path folder;
};

CommonFiles::CommonFiles() : place_(new Place) {
  wstring folder;
  EXPECT_TRUE(platform::nativeShell().commonProgramFiles(folder));
  place_->folder = folder;
}

CommonFiles::~CommonFiles() {
  std::error_code error;
  std::filesystem::remove_all(path() / "Scan Works", error);
  EXPECT_FALSE(error) << error.message();
}

std::filesystem::path CommonFiles::path() const {
  return place_->folder;
}

}  // namespace testing
}  // namespace KV_1_1
