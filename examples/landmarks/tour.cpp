// SPDX-License-Identifier: MIT
//
// Shows one landmark of each kind that any loaded module has.
#include <iostream>

#include "landmarks.h"

int main() {
  using namespace landmarks;
  for (mZClass const* record = nullptr; Landmark::Class()->iterateLeafClasses(record);) {
    SmartPtr<BaseNode> const made(record->create());
    auto const* const landmark = dynamic_cast<Landmark const*>(made.get());
    if (landmark == nullptr) continue;
    std::cout << String(record->name()).stringUTF8() << ": " << landmark->description().stringUTF8() << ", "
              << landmark->size().stringUTF8() << '\n';
  }
}
