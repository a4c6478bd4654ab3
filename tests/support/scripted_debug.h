// SPDX-License-Identifier: MIT
//
// Failures whose codes and texts the test decides.
//
//   ScriptedDebug debug;
//   debug.texts[5] = KVW("Denied.\r\n");
//   platform::ScopedBackend<platform::DebugApi> scope(debug);
#pragma once

#include <map>
#include <vector>

#include "kvbase/platform/debug_api.h"

namespace KV_1_1 {
namespace testing {

class ScriptedDebug final : public platform::DebugApi {
 public:
  ulong32 error = 0;
  std::map<ulong32, wstring> texts;  // any other code has none
  std::vector<ulong32> asked;        // the codes whose text was asked for
  int openTexts = 0;                 // texts that were given out and not yet released

  ulong32 lastError() override { return error; }
  void setLastError(ulong32 code) override { error = code; }
  wchar* errorText(ulong32 code) override {
    asked.push_back(code);
    auto const found = texts.find(code);
    if (found == texts.end()) return nullptr;
    ++openTexts;
    auto* const copy = new wchar[found->second.size() + 1];
    found->second.copy(copy, found->second.size());
    copy[found->second.size()] = 0;
    return copy;
  }
  void freeErrorText(wchar* text) override {
    if (text != nullptr) --openTexts;
    delete[] text;
  }
};

}  // namespace testing
}  // namespace KV_1_1
