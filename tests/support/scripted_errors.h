// SPDX-License-Identifier: MIT
//
// An error backend whose last error and texts the test sets.
//
//   ScriptedErrors errors;
//   errors.texts[5] = KVW("Denied.\r\n");
//   platform::ScopedBackend<platform::ErrorApi> scope(errors);
#pragma once

#include <map>
#include <vector>

#include "kvbase/platform/error_api.h"

namespace KV_1_1 {
namespace testing {

class ScriptedErrors final : public platform::ErrorApi {
 public:
  ulong32 error = 0;
  std::map<ulong32, wstring> texts;  // all other codes have none
  std::vector<ulong32> asked;        // the codes whose text was asked for

  ulong32 lastError() override { return error; }
  void setLastError(ulong32 code) override { error = code; }
  bool errorText(ulong32 code, wstring& text) override {
    asked.push_back(code);
    auto const found = texts.find(code);
    if (found != texts.end()) text = found->second;
    return found != texts.end();
  }
};

}  // namespace testing
}  // namespace KV_1_1
