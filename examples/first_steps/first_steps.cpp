// SPDX-License-Identifier: MIT
#include <kvbase/kvbase.h>
#include <kvbase/modules/client_module.h>

#include <cstdio>

#include "resources/symbols.h"

using namespace KV_1_1;

// A class of one's own: its objects are counted, and its record hangs in the class tree.
class Scan : public BaseNode {
 public:
  explicit Scan(SmartPtr<File const> const& file) : file_(file) {}
  // In the language of the user, from the resources of this program or of its translation.
  String title() const {
    String text;
    text.printf(String::loadFromResource(IDS_SCAN_IN, getLibraryModule()), file_->getBaseName(),
                file_->getDirectory()->getName());
    return text;
  }
  KVBASE_DECLARE_CLASS(Scan, );

 protected:
  ~Scan() override = default;

 private:
  SmartPtr<File const> const file_;
};

KVBASE_REGISTER_CLASS(Scan, BaseNode)
KVBASE_MODULE(Scan)

int main() {
  // Paths are read, combined and compared without a look at the disk, in one notation on both systems.
  SmartPtr<Directory const> const scans = Directory::fromUTF8("D:/scans/old/../2024");
  SmartPtr<File const> const file = File::fromString(*scans, KVW("scan007.dat"));
  std::puts(file->getFullName().stringUTF8());                                    // D:\scans\2024\scan007.dat
  std::puts(file->getFullNameUnicode().stringUTF8());                             // \\?\D:\scans\2024\scan007.dat
  std::puts(file->makeRelative(scans->getParent())->getFullName().stringUTF8());  // 2024\scan007.dat

  // A String is shared when it is copied, and has a text of its own when it is changed.
  String name = file->getBaseName();
  String const original = name;
  name.replace(KVW("7"), KVW("8"));
  std::printf("%s, was %s\n", name.stringUTF8(), original.stringUTF8());  // scan008, was scan007

  SmartPtr<Scan const> const scan(new Scan(file));
  std::puts(scan->title().stringUTF8());                         // Scan scan007 of 2024
  std::puts(String(scan->getClassType()->name()).stringUTF8());  // Scan

  // The disk: all text files below the current folder.
  auto const texts = Directory::fromUTF8(".")->collectFiles(KVW("*.txt"), /*recursive=*/true);
  std::printf("%u text files\n", static_cast<unsigned>(texts.size()));
  return 0;
}
