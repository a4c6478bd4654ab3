// SPDX-License-Identifier: MIT
//
// The program that the README shows: it is the one in examples/, and it prints what its comments say.
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "tests/shared/clients/run_host.h"

namespace KV_1_1 {
namespace testing {
namespace {

using ::testing::Contains;

std::string textOf(std::filesystem::path const& belowRoot) {
  std::filesystem::path const root =
      std::filesystem::path(__FILE__).parent_path().parent_path().parent_path().parent_path();
  std::ifstream file(root / belowRoot);
  std::ostringstream text;
  text << file.rdbuf();
  EXPECT_TRUE(file) << belowRoot;
  return text.str();
}

TEST(Readme, ShowsTheProgramAsItStands) {
  std::string const program = textOf("examples/first_steps/first_steps.cpp");
  std::string const withoutLicence = program.substr(program.find('\n') + 1);
  ASSERT_NE(withoutLicence, "");
  EXPECT_NE(textOf("README.md").find("```cpp\n" + withoutLicence + "```\n"), std::string::npos);
}

TEST(Readme, ProgramPrintsWhatItsCommentsSay) {
  HostRun const run = runHost("first_steps", {});
  EXPECT_EQ(run.status, 0);
  Lines said;
  std::istringstream program(textOf("examples/first_steps/first_steps.cpp"));
  for (std::string line; std::getline(program, line);) {
    if (line.find(";  ") != std::string::npos) said.push_back(line.substr(line.find("// ") + 3));
  }
  ASSERT_EQ(said.size(), 6u);
  ASSERT_EQ(run.lines.size(), said.size() + 1);
  EXPECT_EQ(Lines(run.lines.begin(), run.lines.end() - 1), said);
}

TEST(Readme, ProgramSpeaksTheLanguageOfItsUser) {
  EXPECT_THAT(runHost("first_steps", {}, "deu").lines, Contains("Aufnahme scan007 aus 2024"));
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
