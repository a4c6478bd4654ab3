// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace KV_1_1 {
namespace testing {

// Runs a program to its end and returns its exit status; -1 if it cannot be started or is ended by a fault. The current folder
// of the program is that of the test program, where it finds the library. REQUIRES: no argument has a quote or ends in a
// backslash.
int runProgram(std::filesystem::path const& program, std::vector<std::string> const& arguments);

}  // namespace testing
}  // namespace KV_1_1
