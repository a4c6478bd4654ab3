// SPDX-License-Identifier: MIT
//
// A small user of the installed library; its status is 0 if the library does what it should.
#include <cstdio>

#include "kvbase/kvbase.h"

int main() {
  using KV_1_1::Directory;
  using KV_1_1::SmartPtr;
  using KV_1_1::String;

  SmartPtr<Directory> const directory = Directory::fromString(String(KVW("C:\\scans\\")) + KVW("today\\"));
  if (!directory || directory->getName() != KVW("today") || directory->getClassType() != Directory::Class()) {
    std::fputs("KVBase does not work as installed\n", stderr);
    return 1;
  }
  String line;
  line.printf(KVW("%ls of %d"), directory->getName(), 2026);
  std::puts(line.stringUTF8());
  return 0;
}
