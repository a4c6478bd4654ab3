// SPDX-License-Identifier: MIT
//
// A system that exists only in the test: a program C:\app\prog.exe and a module C:\app\tool.dll, without version data,
// without translations, on a machine that speaks English. What the library remembers about languages is forgotten when
// the world begins and ends.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "kvbase/languages/internal/language_search.h"
#include "tests/support/scripted_locales.h"
#include "tests/support/scripted_modules.h"
#include "tests/support/scripted_settings.h"
#include "tests/support/scripted_shell.h"

namespace KV_1_1 {
namespace testing {

using Texts = std::vector<std::string>;

constexpr unsigned short kGerman = 1031;
constexpr unsigned short kAustrian = 3079;
constexpr unsigned short kFrench = 1036;
constexpr unsigned short kJapanese = 1041;
constexpr unsigned short kEnglish = 1033;
// The primary languages of these.
constexpr unsigned short kAnyGerman = 7;
constexpr unsigned short kAnyFrench = 12;
constexpr unsigned short kAnyJapanese = 17;

class LanguageWorld {
 public:
  LanguageWorld() {
    forget();
    modules.paths[program()] = KVW("C:\\app\\prog.exe");
    modules.paths[tool()] = KVW("C:\\app\\tool.dll");
    locales.abbreviations = {{kGerman, KVW("DEU")},    {kAustrian, KVW("DEA")},   {kFrench, KVW("FRA")},
                             {kJapanese, KVW("JPN")},  {kEnglish, KVW("ENU")},    {kAnyGerman, KVW("GER")},
                             {kAnyFrench, KVW("FRE")}, {kAnyJapanese, KVW("JAP")}};
    locales.groups = {{1, {kEnglish, kGerman, kFrench, kAustrian}}, {7, {kJapanese}}};
    locales.arguments = {KVW("C:\\app\\prog.exe")};
  }
  ~LanguageWorld() { forget(); }
  LanguageWorld(LanguageWorld const&) = delete;
  LanguageWorld& operator=(LanguageWorld const&) = delete;

  ScriptedModules modules;
  ScriptedLocales locales;
  ScriptedSettings settings;
  ScriptedShell shell;

  HINSTANCE program() const { return modules.programHandle; }
  HINSTANCE tool() const { return modules.tool; }

  static void forget() {
    std::fill_n(commandLineSlot, 4, KVW('\0'));
    std::fill_n(registrySlot, 4, KVW('\0'));
    moduleLanguages().clear();
  }
  // The language recorded for a module; "none" without an entry.
  static std::string recorded(HINSTANCE module) {
    auto const found = moduleLanguages().find(reinterpret_cast<std::uintptr_t>(module));
    return found != moduleLanguages().end() ? std::to_string(found->second) : "none";
  }

  void setLanguages(std::uint16_t userUi, std::uint16_t user, std::uint16_t systemUi, std::uint16_t system) {
    locales.userUi = userUi;
    locales.user = user;
    locales.systemUi = systemUi;
    locales.system = system;
  }
  void setArguments(std::vector<wstring> const& arguments) {
    locales.arguments = {KVW("C:\\app\\prog.exe")};
    locales.arguments.insert(locales.arguments.end(), arguments.begin(), arguments.end());
  }
  // Makes the keys of the program and stores the value in the last of them.
  void setRegistry(ulong32 type, std::string const& bytes, std::string const& stem = "prog") {
    std::string path;
    for (std::string const& level :
         {std::string("Software"), std::string("VOLQ"), stem, std::string("Settings"), std::string("10.0")}) {
      path += path.empty() ? level : '\\' + level;
      settings.keys.insert(path);
    }
    settings.values[path + "|GUILanguage"] = {type, bytes};
  }
  void setRegistry(wstring const& text) { setRegistry(1, ScriptedSettings::bytesOf(text)); }

  // The fixed part of a version resource, with which the file then has one.
  void setVersion(wstring const& file, std::uint32_t high, std::uint32_t low) {
    std::uint32_t const fixed[13] = {0xFEEF04BD, 0x10000, high, low};
    modules.versions[file].values[KVW("\\")] = std::string(reinterpret_cast<char const*>(fixed), sizeof fixed);
  }
  // The table of translations: English (United States) in Unicode.
  void setTranslation(wstring const& file) {
    modules.versions[file].values[KVW("\\VarFileInfo\\Translation")] = std::string("\x09\x04\xb0\x04", 4);
  }
  void setText(wstring const& file, wstring const& key, wstring const& text) {
    modules.versions[file].values[KVW("\\StringFileInfo\\040904b0\\") + key] = ScriptedSettings::bytesOf(text);
  }
  // Gives tool.dll a product folder: C:\Common\Acme\Scan\2.1\ .
  void setProduct() {
    setTranslation(KVW("tool.dll"));
    setText(KVW("tool.dll"), KVW("CompanyName"), KVW("Acme"));
    setText(KVW("tool.dll"), KVW("ProductName"), KVW("Scan"));
    setText(KVW("tool.dll"), KVW("ProductVersion"), KVW("2.1"));
  }

  // Forgets the calls and gives the memory of the logs back.
  void clearLogs() {
    modules.log = Texts();
    locales.log = Texts();
    settings.log = Texts();
    shell.log = Texts();
  }

  // The paths that were looked for, in their order.
  Texts probes() const { return argumentsOf(modules.log, "isReadable "); }
  // The ids whose abbreviations were asked for.
  Texts askedIds() const { return argumentsOf(locales.log, "languageAbbreviation "); }

 private:
  static Texts argumentsOf(Texts const& log, std::string const& method) {
    Texts found;
    for (std::string const& entry : log) {
      if (entry.compare(0, method.size(), method) == 0) found.push_back(entry.substr(method.size()));
    }
    return found;
  }

  platform::ScopedBackend<platform::ModuleApi> modulesScope_{modules};
  platform::ScopedBackend<platform::LocaleApi> localesScope_{locales};
  platform::ScopedBackend<platform::SettingsApi> settingsScope_{settings};
  platform::ScopedBackend<platform::ShellApi> shellScope_{shell};
};

// For a slot or a result that may be null.
inline std::string shown(wchar const* text) {
  return text != nullptr ? narrow(text) : "(null)";
}

}  // namespace testing
}  // namespace KV_1_1
