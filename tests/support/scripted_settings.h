// SPDX-License-Identifier: MIT
//
// Settings that exist only in the test. It records each call and counts the open keys.
//
//   ScriptedSettings settings;
//   settings.keys = {"Software", "Software\\VOLQ"};                           // the keys that exist
//   settings.values["Software\\VOLQ|GUILanguage"] = {1, bytesOf(KVW("deu"))}; // type and bytes
//   platform::ScopedBackend<platform::SettingsApi> scope(settings);
#pragma once

#include <cstring>
#include <map>
#include <new>
#include <set>
#include <string>
#include <vector>

#include "kvbase/platform/settings_api.h"
#include "tests/support/narrow_text.h"

namespace KV_1_1 {
namespace testing {

class ScriptedSettings final : public platform::SettingsApi {
 public:
  using Log = std::vector<std::string>;
  struct Value {
    ulong32 type;
    std::string bytes;
  };

  Log log;                              // "open <path>", "read <path>|<name>", "close <path>"
  std::set<std::string> keys;           // paths below the current user
  std::map<std::string, Value> values;  // by "<path>|<name>"
  int openKeys = 0;
  int failAt = 0;  // the call that fails, counted from 1 in the log; 0 for none

  // The bytes of a text, with its terminator.
  static std::string bytesOf(wstring const& text) {
    return std::string(reinterpret_cast<char const*>(text.c_str()), (text.size() + 1) * sizeof(wchar));
  }

  platform::SettingsKey currentUser() override { return &root_; }
  platform::SettingsKey openKey(platform::SettingsKey parent, wchar const* name) override {
    std::string const& above = *static_cast<std::string*>(parent);
    std::string const path = above.empty() ? narrow(name) : above + '\\' + narrow(name);
    log.push_back("open " + path);
    auto const found = keys.find(path);
    if (found == keys.end() || isFailing()) return nullptr;
    ++openKeys;
    return const_cast<std::string*>(&*found);
  }
  bool readValue(platform::SettingsKey key, wchar const* name, ulong32& type, void* data, ulong32& size) override {
    std::string const path = *static_cast<std::string*>(key) + '|' + narrow(name);
    log.push_back("read " + path);
    auto const found = values.find(path);
    if (found == values.end() || isFailing()) return false;
    std::string const& bytes = found->second.bytes;
    type = found->second.type;
    bool const fits = bytes.size() <= size;
    if (fits) std::memcpy(data, bytes.data(), bytes.size());
    size = static_cast<ulong32>(bytes.size());
    return fits;
  }
  void closeKey(platform::SettingsKey key) override {
    --openKeys;
    try {
      log.push_back("close " + *static_cast<std::string*>(key));
    } catch (std::bad_alloc const&) {  // a test of failing allocations; closing itself cannot fail
    }
  }

 private:
  bool isFailing() const { return log.size() == static_cast<std::size_t>(failAt); }

  std::string root_;
};

}  // namespace testing
}  // namespace KV_1_1
