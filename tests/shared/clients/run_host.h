// SPDX-License-Identifier: MIT
//
// Runs the programs beside this one that write what happens in them, one line for each event.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/shared/modules/run_program.h"
#include "tests/support/module_files.h"
#include "tests/support/temp_folder.h"

namespace KV_1_1 {
namespace testing {

using Lines = std::vector<std::string>;

struct HostRun {
  int status;
  Lines lines;
};

// The language is one for which there is no translation, unless it is given.
inline HostRun runHost(std::string const& name, Lines arguments, std::string const& language = "xyz") {
  TempFolder const folder;
  std::filesystem::path const output = folder.path("output.txt");
  arguments.push_back("-lang=" + language);
  std::filesystem::path program = programFile().parent_path() / name;
  program.replace_extension(programFile().extension());
  HostRun run{runProgram(program, arguments, output), {}};
  std::ifstream file(output);
  for (std::string line; std::getline(file, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    run.lines.push_back(line);
  }
  return run;
}

inline Lines joined(std::vector<Lines> const& parts) {
  Lines all;
  for (Lines const& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

// Whether a library can refuse to be loaded; where it cannot, it stays without having been started.
inline bool const kCanRefuseItsLoad = moduleFile("x") == "x.dll";

}  // namespace testing
}  // namespace KV_1_1
