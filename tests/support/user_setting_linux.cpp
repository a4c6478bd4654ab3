// SPDX-License-Identifier: MIT
#include "tests/support/user_setting.h"

#include "tests/platform/linux/environment_variable.h"
#include "tests/support/temp_folder.h"

namespace KV_1_1 {
namespace testing {

struct UserSetting::Store {
  TempFolder folder;
  EnvironmentVariable const configuration{"XDG_CONFIG_HOME", folder.path().c_str()};
};

UserSetting::UserSetting(std::string const& program, std::string const& language) : store_(new Store) {
  std::string const key = "kvbase/registry/HKEY_CURRENT_USER/Software/VOLQ/" + program + "/Settings/10.0/";
  store_->folder.write(key + "GUILanguage", language);
}

UserSetting::~UserSetting() = default;

}  // namespace testing
}  // namespace KV_1_1
