// SPDX-License-Identifier: MIT
//
// The real modules, with a look at each call before it is made:
//
//   class Vanishing final : public InterceptedModules {
//     void enter(char const* method, wchar const*) override { if (method == "loadAsData"s) remove(file); }
//   };
#pragma once

#include "kvbase/platform/module_api.h"

namespace KV_1_1 {
namespace testing {

class InterceptedModules : public platform::ModuleApi {
 public:
  virtual ~InterceptedModules() = default;

  HINSTANCE program() override { return real().program(); }
  HINSTANCE moduleOf(void const* address) override { return real().moduleOf(address); }
  bool hasEntryFunction(HINSTANCE module) override { return real().hasEntryFunction(module); }
  bool modulePath(HINSTANCE module, wstring& path) override { return real().modulePath(module, path); }
  bool longPath(wchar const* path, wstring& longPath) override {
    enter("longPath", path);
    return real().longPath(path, longPath);
  }
  bool isReadable(wchar const* path) override {
    enter("isReadable", path);
    return real().isReadable(path);
  }
  HINSTANCE loadAsData(wchar const* path) override {
    enter("loadAsData", path);
    return real().loadAsData(path);
  }
  bool freeLibrary(HINSTANCE module) override { return real().freeLibrary(module); }

  HRSRC findResource(HINSTANCE module, wchar const* name, wchar const* type) override {
    return real().findResource(module, name, type);
  }
  HRSRC findResourceOfLanguage(HINSTANCE module, wchar const* type, wchar const* name,
                               std::uint16_t language) override {
    return real().findResourceOfLanguage(module, type, name, language);
  }
  bool resourceLanguages(HINSTANCE module, wchar const* type, wchar const* name,
                         std::set<unsigned short>& languages) override {
    return real().resourceLanguages(module, type, name, languages);
  }
  platform::ResourceBytes resourceBytes(HINSTANCE module, HRSRC resource) override {
    return real().resourceBytes(module, resource);
  }
  bool stringTableEntry(HINSTANCE module, unsigned int id, wstring& text) override {
    return real().stringTableEntry(module, id, text);
  }

  ulong32 versionInfoSize(wchar const* file, ulong32& handle) override {
    enter("versionInfoSize", file);
    return real().versionInfoSize(file, handle);
  }
  bool versionInfo(wchar const* file, ulong32 handle, ulong32 size, void* block) override {
    enter("versionInfo", file);
    return real().versionInfo(file, handle, size, block);
  }
  bool queryVersion(void const* block, wchar const* path, void const*& value, ulong32& length) override {
    return real().queryVersion(block, path, value, length);
  }

 protected:
  // Called before each method that has the path of a file.
  virtual void enter(char const* method, wchar const* path) = 0;

 private:
  static platform::ModuleApi& real() { return platform::nativeModules(); }
};

}  // namespace testing
}  // namespace KV_1_1
