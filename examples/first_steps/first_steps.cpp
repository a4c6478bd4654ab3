// SPDX-License-Identifier: MIT
#include <kvbase/kvbase.h>

#include <cstdio>

using namespace KV_1_1;

int main() {
  // Paths are read, combined and compared without a look at the disk, in one notation on both systems.
  SmartPtr<Directory const> const scans = Directory::fromUTF8("D:/scans/old/../2024");
  SmartPtr<File const> const scan = File::fromString(*scans, KVW("scan007.dat"));
  std::puts(scan->getFullName().stringUTF8());                                    // D:\scans\2024\scan007.dat
  std::puts(scan->getFullNameUnicode().stringUTF8());                             // \\?\D:\scans\2024\scan007.dat
  std::puts(scan->makeRelative(scans->getParent())->getFullName().stringUTF8());  // 2024\scan007.dat

  // A String is shared when it is copied, and has a text of its own when it is changed.
  String title = scan->getBaseName();
  String const original = title;
  title.replace(KVW("7"), KVW("8"));
  std::printf("%s, was %s\n", title.stringUTF8(), original.stringUTF8());  // scan008, was scan007

  // The disk: all text files below the current folder.
  auto const texts = Directory::fromUTF8(".")->collectFiles(KVW("*.txt"), /*recursive=*/true);
  std::printf("%u text files\n", static_cast<unsigned>(texts.size()));
  return 0;
}
