// SPDX-License-Identifier: MIT
//
// The program that the README shows: it is the one in examples/, and it prints what its comments say.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

// The program is linked into the suite under another name.
#define main firstSteps
#include "examples/first_steps/first_steps.cpp"
#undef main

namespace {

std::string textOf(std::filesystem::path const& belowRoot) {
  std::filesystem::path const root = std::filesystem::path(__FILE__).parent_path().parent_path().parent_path();
  std::ifstream file(root / belowRoot);
  std::ostringstream text;
  text << file.rdbuf();
  EXPECT_TRUE(file) << belowRoot;
  return text.str();
}

TEST(ReadmeTest, ShowsTheProgramAsItStands) {
  std::string const program = textOf("examples/first_steps/first_steps.cpp");
  std::string const withoutLicence = program.substr(program.find('\n') + 1);
  ASSERT_NE(withoutLicence, "");
  EXPECT_NE(textOf("README.md").find("```cpp\n" + withoutLicence + "```\n"), std::string::npos);
}

TEST(ReadmeTest, ProgramPrintsWhatItsCommentsSay) {
  testing::internal::CaptureStdout();
  int const status = firstSteps();
  std::istringstream printed(testing::internal::GetCapturedStdout());
  EXPECT_EQ(status, 0);

  std::istringstream program(textOf("examples/first_steps/first_steps.cpp"));
  int compared = 0;
  for (std::string line; std::getline(program, line);) {
    std::size_t const comment = line.find(";  ");
    if (comment == std::string::npos) continue;
    std::string output;
    std::getline(printed, output);
    if (!output.empty() && output.back() == '\r') output.pop_back();
    EXPECT_EQ(line.substr(line.find("// ") + 3), output);
    ++compared;
  }
  EXPECT_EQ(compared, 4);
}

}  // namespace
