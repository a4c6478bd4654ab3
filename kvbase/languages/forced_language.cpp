// SPDX-License-Identifier: MIT
#include <algorithm>
#include <array>
#include <vector>

#include "kvbase/languages/internal/language_search.h"
#include "kvbase/modules/internal/module_path.h"
#include "kvbase/platform/locale_api.h"
#include "kvbase/platform/scoped_handle.h"
#include "kvbase/platform/settings_api.h"
#include "kvbase/strings/internal/character_class.h"

namespace KV_1_1 {

wchar commandLineSlot[4];
wchar registrySlot[4];

namespace {

constexpr std::size_t kSlotUnits = sizeof registrySlot / sizeof(wchar);
// "-lang=" and up to three letters.
constexpr std::size_t kOptionSize = 6;
constexpr std::size_t kLongestOption = kOptionSize + kSlotUnits - 1;

struct KeyTraits {
  using Value = platform::SettingsKey;
  static Value none() { return nullptr; }
  static void close(Value key) { platform::settings().closeKey(key); }
};
using Key = platform::ScopedHandle<KeyTraits>;

bool isLanguageOption(wstring const& argument) {
  static constexpr wchar kName[] = KVW("lang=");
  if (argument.size() < kOptionSize || argument.size() > kLongestOption) return false;
  if (argument[0] != KVW('-') && argument[0] != KVW('/')) return false;
  auto const matches = [](wchar expected, wchar unit) { return expected == strings::foldCase(unit); };
  return std::equal(kName, kName + kOptionSize - 1, argument.begin() + 1, matches);
}

void readRegistrySlot(platform::SettingsKey key) {
  ulong32 type = 0;
  ulong32 size = sizeof registrySlot;
  bool const read = platform::settings().readValue(key, KVW("GUILanguage"), type, registrySlot, size);
  bool const isText = type == platform::kTextValue || type == platform::kExpandableTextValue;
  // Four units stored without a terminator would fit.
  bool const isTerminated = registrySlot[kSlotUnits - 1] == 0;
  if (!read || !isText || !isTerminated) std::fill_n(registrySlot, kSlotUnits, KVW('\0'));
}

}  // namespace

wchar const* GetCommandLineLangAbbrev() {
  if (commandLineSlot[0] != 0) return commandLineSlot;
  std::vector<wstring> arguments;
  if (!platform::locales().commandLine(arguments)) return nullptr;
  auto const option = std::find_if(arguments.begin(), arguments.end(), &isLanguageOption);
  // The slot has been zeros, so the text is terminated.
  if (option != arguments.end()) std::copy(option->begin() + kOptionSize, option->end(), commandLineSlot);
  return commandLineSlot[0] != 0 ? commandLineSlot : nullptr;
}

wchar const* GetRegistryLangAbbrev() {
  wstring path;
  if (!platform::modules().modulePath(platform::modules().program(), path)) return nullptr;
  makeLongPath(path);
  wstring const program = stemOf(path);
  wchar const* const levels[] = {KVW("Software"), KVW("VOLQ"), program.c_str(), KVW("Settings"), KVW("10.0")};

  // An array is destroyed from its end, so the keys are closed in the reverse order.
  std::array<Key, 5> keys;
  platform::SettingsKey parent = platform::settings().currentUser();
  std::size_t opened = 0;
  for (; opened < keys.size(); ++opened) {
    keys[opened] = Key(platform::settings().openKey(parent, levels[opened]));
    if (!keys[opened]) break;
    parent = keys[opened].get();
  }
  std::fill_n(registrySlot, kSlotUnits, KVW('\0'));
  if (opened == keys.size()) readRegistrySlot(parent);
  return registrySlot[0] != 0 ? registrySlot : nullptr;
}

wchar const* GetForcedLangAbbrev() {
  wchar const* const abbrev = GetCommandLineLangAbbrev();
  return abbrev != nullptr ? abbrev : GetRegistryLangAbbrev();
}

}  // namespace KV_1_1
