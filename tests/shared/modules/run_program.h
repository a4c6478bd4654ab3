// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace KV_1_1 {
namespace testing {

// Runs a program to its end; it finds the library of the test program. Returns its exit status; -1 if it cannot be started or
// is ended by a fault. What it writes goes to the file `output`, which is made or emptied; without such a file it goes where
// the output of the test program goes.
// REQUIRES: no argument has a quote or ends in a backslash.
int runProgram(std::filesystem::path const& program, std::vector<std::string> const& arguments,
               std::filesystem::path const& output = std::filesystem::path());

}  // namespace testing
}  // namespace KV_1_1
