// SPDX-License-Identifier: MIT
//
// scanshelf: what lies in a folder of scans? It copies them, too. An example of a program on KVBase.
#include <kvbase/kvbase.h>

#include <iostream>
#include <vector>

#include "progress_line.h"
#include "run.h"

int main(int argc, char** argv) {
  // The words come in the code page of the process, which number 0 stands for on every system.
  std::vector<KV_1_1::String> words;
  for (int i = 1; i < argc; ++i) words.emplace_back(KV_1_1::CodePageInterface(argv[i], 0));
  return scanshelf::run(words, std::cout, std::cerr, scanshelf::isErrorStreamTerminal());
}
