// SPDX-License-Identifier: MIT
#include "tests/shared/modules/common_files.h"

#include "tests/platform/linux/environment_variable.h"
#include "tests/support/narrow_text.h"
#include "tests/support/temp_folder.h"

namespace KV_1_1 {
namespace testing {

struct CommonFiles::Place {
  TempFolder folder;
  EnvironmentVariable const variable{"KVBASE_COMMON_FILES", narrow(folder.text()).c_str()};
};

CommonFiles::CommonFiles() : place_(new Place) {}

CommonFiles::~CommonFiles() = default;

std::filesystem::path CommonFiles::path() const {
  return place_->folder.path();
}

}  // namespace testing
}  // namespace KV_1_1
