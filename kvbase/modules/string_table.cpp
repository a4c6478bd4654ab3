// SPDX-License-Identifier: MIT
#include "kvbase/modules/module.h"
#include "kvbase/platform/module_api.h"

namespace KV_1_1 {

String String::loadFromResource(unsigned int id, Module const& module) {
  wstring text;
  bool const loaded = platform::modules().stringTableEntry(module.resourceModule_, id, text) ||
                      platform::modules().stringTableEntry(module.codeModule_, id, text);
  if (!loaded) return String(KVW("Error loading string resource!"));
  return text.empty() ? EMPTY : String(text.data(), static_cast<int>(text.size()));
}

}  // namespace KV_1_1
