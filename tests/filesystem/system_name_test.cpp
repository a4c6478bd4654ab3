// SPDX-License-Identifier: MIT
//
// The names that the system gets where they are built without a block of their own.
#include <gtest/gtest.h>

#include "tests/filesystem/disk_support.h"
#include "tests/filesystem/scripted_system.h"

namespace KV_1_1 {
namespace testing {
namespace {

class SystemNames : public ScriptedSystem<ScriptedFiles> {
 protected:
  ~SystemNames() override { EXPECT_EQ(messages.take(), Texts()); }
};

TEST_F(SystemNames, OfEachLengthAreThoseThatItemsGive) {
  wstring name = KVW("C:\\");
  for (int units = 0; units < 300; ++units) {
    name += units % 40 == 39 ? KVW('\\') : KVW('n');
    SmartPtr<Directory const> const directory = directoryAt(name.c_str());
    SmartPtr<File const> const file = fileAt((name + KVW("f.e")).c_str());
    files.script.attributes = {
        {wstring(static_cast<wchar const*>(directory->getFullNameUnicode())), platform::kAttributeDirectory},
        {wstring(static_cast<wchar const*>(file->getFullNameUnicode())), platform::kAttributeNormal}};
    ASSERT_TRUE(directory->exists()) << units;
    ASSERT_TRUE(file->exists()) << units;
    ASSERT_TRUE(file->remove()) << units;
  }
}

// A file and a directory with other names for the system than their classes give.
class OtherFile final : public File {
 public:
  explicit OtherFile(File const& file) : File(file) {}
  String getFullNameUnicode() const override { return KVW("other file"); }
};
class OtherDirectory final : public Directory {
 public:
  explicit OtherDirectory(Directory const& directory) : Directory(directory) {}
  String getFullNameUnicode() const override { return KVW("other directory"); }
};

TEST_F(SystemNames, OfADerivedClassAreItsOwn) {
  files.script.attributes = {{KVW("other file"), platform::kAttributeNormal},
                             {KVW("other directory"), platform::kAttributeDirectory}};
  SmartPtr<File const> const file = new OtherFile(*fileAt(KVW("C:\\a\\f.e")));
  SmartPtr<Directory const> const directory = new OtherDirectory(*directoryAt(KVW("C:\\a")));
  EXPECT_TRUE(directory->exists());
  EXPECT_TRUE(file->exists());
  files.clearLog();
  EXPECT_TRUE(file->remove());
  EXPECT_EQ(files.log(), (Log{"getAttributes other file", "deleteFile other file"}));
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
