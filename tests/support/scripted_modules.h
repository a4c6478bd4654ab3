// SPDX-License-Identifier: MIT
//
// Modules that exist only in the test: their paths, files, resources and version data. It records each call.
//
//   ScriptedModules modules;
//   modules.paths[modules.tool] = KVW("C:\\app\\tool.dll");
//   modules.resources[modules.tool][{KVW("METADATA"), KVW("RESOURCE.H")}][1031] = "#define A 1\r\n";
//   modules.files.insert(KVW("C:\\app\\toolabc.dll"));             // readable
//   modules.libraries[KVW("C:\\app\\toolabc.dll")] = modules.translation;
//   modules.versions[KVW("tool.dll")].values[KVW("\\VarFileInfo\\Translation")] = std::string("\x07\x04\xb0\x04", 4);
//   modules.failures.insert("findResourceOfLanguage");             // this call always fails
//   platform::ScopedBackend<platform::ModuleApi> scope(modules);
//
// Texts are compared unit by unit, but for types and names of resources, which are kept in upper case (ASCII); a number
// is kept as "#123". What the script does not name is missing.
#pragma once

#include <cstring>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "kvbase/platform/module_api.h"
#include "tests/support/narrow_text.h"

namespace KV_1_1 {
namespace testing {

class ScriptedModules : public platform::ModuleApi {
 public:
  using Log = std::vector<std::string>;
  using Versions = std::map<std::uint16_t, std::string>;  // of one resource, by language
  struct VersionData {
    std::map<wstring, std::string> values;  // by query path; the bytes of the value
    std::set<wstring> nullValues;           // query paths that succeed with a null pointer and the length 4
  };

  virtual ~ScriptedModules() = default;

  // Handles for use in the script; a handle says nothing by itself.
  HINSTANCE const programHandle = handle(0x10000);
  HINSTANCE const tool = handle(0x20000);
  HINSTANCE const translation = handle(0x30001);

  Log log;  // the method's name and its texts and numbers
  std::set<std::string> failures;
  int failAt = 0;  // the call that fails, counted from 1 in the log; 0 for none
  std::map<HINSTANCE, wstring> paths;
  std::map<wstring, wstring> longPaths;  // all other paths are their own long form
  std::set<wstring> files;
  std::map<wstring, HINSTANCE> libraries;
  std::vector<HINSTANCE> freed;
  // By type and name.
  std::map<HINSTANCE, std::map<std::pair<wstring, wstring>, Versions>> resources;
  // What findResource prefers, the first that exists; else the lowest language.
  std::vector<std::uint16_t> preferredLanguages;
  std::map<HINSTANCE, std::map<unsigned int, wstring>> strings;
  std::map<wstring, VersionData> versions;  // by the name given to versionInfoSize

  // How often a method has been called.
  int calls(std::string const& method) const {
    int count = 0;
    for (std::string const& entry : log) count += entry.compare(0, entry.find(' '), method) == 0 ? 1 : 0;
    return count;
  }

  HINSTANCE program() override { return enter("program", "") ? programHandle : nullptr; }
  HINSTANCE moduleOf(void const*) override { return enter("moduleOf", "") ? programHandle : nullptr; }
  bool hasEntryFunction(HINSTANCE module) override { return enter("hasEntryFunction", "") && module != programHandle; }
  bool modulePath(HINSTANCE module, wstring& path) override {
    auto const found = paths.find(module != nullptr ? module : programHandle);
    if (!enter("modulePath", "") || found == paths.end()) return false;
    path = found->second.substr(0, platform::kModulePathCapacity - 1);
    return true;
  }
  bool longPath(wchar const* path, wstring& longPath) override {
    if (!enter("longPath", narrow(path))) return false;
    auto const found = longPaths.find(path);
    longPath = found != longPaths.end() ? found->second : path;
    return true;
  }
  bool isReadable(wchar const* path) override { return enter("isReadable", narrow(path)) && files.count(path) != 0; }
  HINSTANCE loadAsData(wchar const* path) override {
    auto const found = libraries.find(path);
    return enter("loadAsData", narrow(path)) && found != libraries.end() ? found->second : nullptr;
  }
  bool freeLibrary(HINSTANCE module) override {
    if (!enter("freeLibrary", "")) return false;
    freed.push_back(module);
    return true;
  }

  HRSRC findResource(HINSTANCE module, wchar const* name, wchar const* type) override {
    if (!enter("findResource", keyText(type, name))) return nullptr;
    Versions* const found = versionsOf(module, type, name);
    if (found == nullptr || found->empty()) return nullptr;
    for (std::uint16_t const language : preferredLanguages) {
      auto const version = found->find(language);
      if (version != found->end()) return resource(version->second);
    }
    return resource(found->begin()->second);
  }
  HRSRC findResourceOfLanguage(HINSTANCE module, wchar const* type, wchar const* name,
                               std::uint16_t language) override {
    if (!enter("findResourceOfLanguage", keyText(type, name) + ' ' + std::to_string(language))) return nullptr;
    Versions* const found = versionsOf(module, type, name);
    if (found == nullptr || found->count(language) == 0) return nullptr;
    return resource((*found)[language]);
  }
  bool resourceLanguages(HINSTANCE module, wchar const* type, wchar const* name,
                         std::set<unsigned short>& languages) override {
    if (!enter("resourceLanguages", keyText(type, name))) return false;
    Versions* const found = versionsOf(module, type, name);
    if (found == nullptr) return false;
    for (auto const& version : *found) languages.insert(version.first);
    return true;
  }
  platform::ResourceBytes resourceBytes(HINSTANCE, HRSRC handle) override {
    if (!enter("resourceBytes", "")) return platform::ResourceBytes();
    auto* const bytes = reinterpret_cast<std::string*>(handle);
    return {&(*bytes)[0], static_cast<ulong32>(bytes->size())};
  }
  bool stringTableEntry(HINSTANCE module, unsigned int id, wstring& text) override {
    if (!enter("stringTableEntry", std::to_string(id))) return false;
    auto const found = strings[module].find(id);
    if (found == strings[module].end()) return false;
    text = found->second;
    return true;
  }

  ulong32 versionInfoSize(wchar const* file, ulong32& handle) override {
    auto const found = versions.find(file);
    if (!enter("versionInfoSize", narrow(file)) || found == versions.end()) return 0;
    handle = 7;
    return sizeof(VersionData const*);
  }
  bool versionInfo(wchar const* file, ulong32 handle, ulong32 size, void* block) override {
    auto const found = versions.find(file);
    if (!enter("versionInfo", narrow(file) + ' ' + std::to_string(handle) + ' ' + std::to_string(size)) ||
        found == versions.end())
      return false;
    VersionData const* const data = &found->second;
    std::memcpy(block, &data, sizeof data);
    return true;
  }
  bool queryVersion(void const* block, wchar const* path, void const*& value, ulong32& length) override {
    if (!enter("queryVersion", narrow(path))) return false;
    VersionData const* data = nullptr;
    std::memcpy(&data, block, sizeof data);
    if (data->nullValues.count(path) != 0) {
      value = nullptr;
      length = 4;
      return true;
    }
    auto const found = data->values.find(path);
    if (found == data->values.end()) return false;
    value = found->second.data();
    length = static_cast<ulong32>(found->second.size());
    return true;
  }

 private:
  static HINSTANCE handle(std::uintptr_t value) { return reinterpret_cast<HINSTANCE>(value); }
  static HRSRC resource(std::string& bytes) { return reinterpret_cast<HRSRC>(&bytes); }

  static wstring keyOf(wchar const* typeOrName) {
    if (platform::isResourceId(typeOrName))
      return widen('#' + std::to_string(reinterpret_cast<std::uintptr_t>(typeOrName)));
    wstring key = typeOrName;
    for (wchar& unit : key) {
      if (unit >= KVW('a') && unit <= KVW('z')) unit = static_cast<wchar>(unit - KVW('a') + KVW('A'));
    }
    return key;
  }
  static std::string keyText(wchar const* type, wchar const* name) {
    return narrow(keyOf(type)) + ' ' + narrow(keyOf(name));
  }

  Versions* versionsOf(HINSTANCE module, wchar const* type, wchar const* name) {
    auto const found = resources[module].find({keyOf(type), keyOf(name)});
    return found != resources[module].end() ? &found->second : nullptr;
  }
  bool enter(char const* method, std::string const& arguments) {
    log.push_back(arguments.empty() ? method : method + (' ' + arguments));
    return failures.count(method) == 0 && log.size() != static_cast<std::size_t>(failAt);
  }
};

}  // namespace testing
}  // namespace KV_1_1
