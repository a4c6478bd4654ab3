// SPDX-License-Identifier: MIT
//
// A desktop that returns what the test says and records each call.
//
//   ScriptedShell shell;
//   shell.openResult = 31;
//   platform::ScopedBackend<platform::ShellApi> scope(shell);
//   file.openWithDefaultApp();
//   EXPECT_EQ(shell.log, ScriptedShell::Log{"open (null) C:\\a.txt %HOMEPATH% 1"});
#pragma once

#include <string>
#include <vector>

#include "kvbase/platform/shell_api.h"
#include "tests/support/narrow_text.h"

namespace KV_1_1 {
namespace testing {

class ScriptedShell final : public platform::ShellApi {
 public:
  using Log = std::vector<std::string>;

  Log log;  // the method's name and its arguments; "(null)" for null
  std::intptr_t openResult = 42;
  std::int32_t showResult = 0;
  platform::ItemList item = &item_;  // the result of itemListFromPath
  int openItems = 0;                 // item lists that have been returned and not yet released
  bool hasCommonFiles = true;
  wstring commonFiles = KVW("C:\\Common");

  std::intptr_t open(wchar const* verb, wchar const* file, wchar const* directory, int show) override {
    log.push_back("open " + shown(verb) + ' ' + shown(file) + ' ' + shown(directory) + ' ' + std::to_string(show));
    return openResult;
  }
  platform::ItemList itemListFromPath(wchar const* path) override {
    log.push_back("itemListFromPath " + shown(path));
    if (item != nullptr) ++openItems;
    return item;
  }
  std::int32_t showItem(platform::ItemList) override {
    log.push_back("showItem");
    return showResult;
  }
  void freeItemList(platform::ItemList list) override {
    log.push_back("freeItemList");
    if (list != nullptr) --openItems;
  }
  bool commonProgramFiles(wstring& folder) override {
    log.push_back("commonProgramFiles");
    if (hasCommonFiles) folder = commonFiles;
    return hasCommonFiles;
  }

 private:
  static std::string shown(wchar const* text) { return text == nullptr ? "(null)" : narrow(text); }

  char item_ = 0;
};

}  // namespace testing
}  // namespace KV_1_1
