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
// What the program writes goes to the file `output`, which is made or emptied; without one to where the test program writes.
int runProgram(std::filesystem::path const& program, std::vector<std::string> const& arguments,
               std::filesystem::path const& output = std::filesystem::path());

}  // namespace testing
}  // namespace KV_1_1
