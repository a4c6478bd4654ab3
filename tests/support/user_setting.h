// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>

namespace KV_1_1 {
namespace testing {

// Stores a language in the user's settings of a program for a scope, where the library looks for it: the text
// "GUILanguage" of Software\VOLQ\<program>\Settings\10.0. On Windows this is the registry, so each test needs a program name
// of its own; elsewhere it is a configuration folder of the test's own, which programs that the test starts see too.
class UserSetting {
 public:
  UserSetting(std::string const& program, std::string const& language);
  ~UserSetting();
  UserSetting(UserSetting const&) = delete;
  UserSetting& operator=(UserSetting const&) = delete;

 private:
  struct Store;
  std::unique_ptr<Store> const store_;
};

}  // namespace testing
}  // namespace KV_1_1
