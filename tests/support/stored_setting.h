// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>

namespace KV_1_1 {
namespace testing {

// Stores a text in the user's settings for a scope: the value "GUILanguage" of Software\VOLQ\<program>\Settings\10.0. On
// Windows this is the registry, so each test needs a program name of its own; elsewhere it is a configuration folder of
// the test's own.
class StoredSetting {
 public:
  StoredSetting(std::string const& program, std::string const& text);
  ~StoredSetting();
  StoredSetting(StoredSetting const&) = delete;
  StoredSetting& operator=(StoredSetting const&) = delete;

 private:
  struct Store;
  std::unique_ptr<Store> const store_;
};

}  // namespace testing
}  // namespace KV_1_1
