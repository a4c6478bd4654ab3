// SPDX-License-Identifier: MIT
//
// Runs a fuzzer where there is no fuzzing engine: the files it is given, or else random inputs.
//
//   path_fuzzer --rounds 20000 --seed 7        random inputs, the same for the same seed
//   path_fuzzer crash-1234                     one file again
#include <fstream>
#include <iterator>
#include <random>
#include <vector>

#include "fuzzers/fuzz_input.h"

namespace {

void runFile(char const* name) {
  std::ifstream file(name, std::ios::binary);
  std::vector<char> const bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  LLVMFuzzerTestOneInput(reinterpret_cast<std::uint8_t const*>(bytes.data()), bytes.size());
}

// Half of the bytes come from what the grammars are made of.
void runRandom(int rounds, unsigned seed) {
  static char const kTokens[] = "\\/:.*?\"%+-0123456789eExXuUnrtlsdfg \n\r\tCAacTtFf";
  std::mt19937 random(seed);
  std::vector<std::uint8_t> bytes;
  for (int round = 0; round < rounds; ++round) {
    bytes.resize(random() % (round % 16 == 0 ? 4096 : 64));
    for (std::uint8_t& byte : bytes) {
      unsigned const value = random();
      byte = static_cast<std::uint8_t>(value & 0x100 ? value
                                                     : static_cast<unsigned>(kTokens[value % (sizeof kTokens - 1)]));
    }
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
  }
}

}  // namespace

int main(int count, char** arguments) {
  int rounds = 20000;
  unsigned seed = 1;
  int files = 0;
  for (int i = 1; i < count; ++i) {
    std::string const argument = arguments[i];
    if (argument == "--rounds" && i + 1 < count) {
      rounds = std::atoi(arguments[++i]);
    } else if (argument == "--seed" && i + 1 < count) {
      seed = static_cast<unsigned>(std::atoi(arguments[++i]));
    } else {
      runFile(arguments[i]);
      ++files;
    }
  }
  if (files == 0) runRandom(rounds, seed);
  std::printf("%d inputs\n", files > 0 ? files : rounds);
  return 0;
}
