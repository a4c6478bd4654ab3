// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "kvbase/platform/module_api.h"
#include "tests/support/pe_image.h"
#include "tests/support/temp_folder.h"

namespace KV_1_1 {
namespace testing {
namespace {

std::string text(platform::ResourceBytes const& bytes) {
  return bytes.data == nullptr ? "none" : std::string(static_cast<char const*>(bytes.data), bytes.size);
}

class LinuxModuleApi : public ::testing::Test {
 protected:
  static platform::ModuleApi& modules() { return platform::nativeModules(); }

  HINSTANCE load(std::string const& bytes, char const* name = "tool.dll") {
    folder.write(name, bytes);
    HINSTANCE const module = modules().loadAsData(folder.text(wstring(name, name + strlen(name))).c_str());
    if (module != nullptr) loaded.push_back(module);
    return module;
  }
  ~LinuxModuleApi() override {
    for (HINSTANCE const module : loaded) modules().freeLibrary(module);
  }
  static std::string find(HINSTANCE module, wchar const* name, wchar const* type) {
    HRSRC const resource = modules().findResource(module, name, type);
    return resource == nullptr ? "none" : text(modules().resourceBytes(module, resource));
  }

  TempFolder folder;
  std::vector<HINSTANCE> loaded;
};

TEST_F(LinuxModuleApi, ADataModuleGivesItsResources) {
  PeImage image;
  image.add(KVW("METADATA"), KVW("RESOURCE.H"), 1031, "#define A 1\r\n");
  image.add(KVW("METADATA"), KVW("EMPTY"), 1031, "");
  image.add(KVW("METADATA"), 17, 1031, "seventeen");
  image.add(6, 7, 1033, stringBlock({{4, KVW("Hello")}}));
  HINSTANCE const module = load(image.build());
  ASSERT_NE(module, nullptr);
  EXPECT_EQ(find(module, KVW("resource.h"), KVW("metadata")), "#define A 1\r\n");
  EXPECT_EQ(find(module, platform::resourceId(17), KVW("METADATA")), "seventeen");
  EXPECT_EQ(find(module, KVW("#17"), KVW("METADATA")), "seventeen");
  EXPECT_EQ(find(module, KVW("EMPTY"), KVW("METADATA")), "");
  EXPECT_EQ(find(module, KVW("MISSING"), KVW("METADATA")), "none");
  wstring entry = KVW("before");
  EXPECT_FALSE(modules().stringTableEntry(module, 99, entry));
  EXPECT_EQ(entry, KVW("before"));
  EXPECT_TRUE(modules().stringTableEntry(module, 100, entry));
  EXPECT_EQ(entry, KVW("Hello"));
  EXPECT_TRUE(modules().freeLibrary(module));
  EXPECT_FALSE(modules().freeLibrary(module));
  EXPECT_EQ(find(module, KVW("RESOURCE.H"), KVW("METADATA")), "none");
  loaded.clear();
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
