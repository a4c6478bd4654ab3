// SPDX-License-Identifier: MIT
#include "tests/support/stored_setting.h"

#include "tests/platform/linux/environment_variable.h"
#include "tests/support/temp_folder.h"

namespace KV_1_1 {
namespace testing {

struct StoredSetting::Store {
  TempFolder folder;
  EnvironmentVariable const configuration{"XDG_CONFIG_HOME", folder.path().c_str()};
};

StoredSetting::StoredSetting(std::string const& program, std::string const& text) : store_(new Store) {
  std::string const key = "kvbase/registry/HKEY_CURRENT_USER/Software/VOLQ/" + program + "/Settings/10.0/";
  store_->folder.write(key + "GUILanguage", text);
}

StoredSetting::~StoredSetting() = default;

}  // namespace testing
}  // namespace KV_1_1
