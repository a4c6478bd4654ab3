// SPDX-License-Identifier: MIT
//
// The page on client modules shows code of the example, as it stands there.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

fs::path const kRoot = fs::path(__FILE__).parent_path().parent_path().parent_path();

std::string contentsOf(fs::path const& path) {
  std::ifstream file(path);
  std::ostringstream text;
  text << file.rdbuf();
  EXPECT_TRUE(file) << path;
  return text.str();
}

struct Block {
  std::string language;
  std::string code;
};

// The blocks between ``` and ```.
std::vector<Block> blocksOf(std::string const& page) {
  std::vector<Block> blocks;
  std::istringstream lines(page);
  bool isInside = false;
  for (std::string line; std::getline(lines, line);) {
    bool const isFence = line.compare(0, 3, "```") == 0;
    if (isFence && !isInside) blocks.push_back({line.substr(3), std::string()});
    if (!isFence && isInside) blocks.back().code += line + '\n';
    isInside = isInside != isFence;
  }
  EXPECT_FALSE(isInside);
  return blocks;
}

TEST(ClientModulesPage, ShowsTheExampleAsItStands) {
  std::vector<std::string> files;
  for (auto const& entry : fs::recursive_directory_iterator(kRoot / "examples" / "landmarks")) {
    if (entry.is_regular_file()) files.push_back(contentsOf(entry.path()));
  }
  ASSERT_FALSE(files.empty());
  std::set<std::string> languages;
  for (Block const& block : blocksOf(contentsOf(kRoot / "docs" / "client_modules.md"))) {
    // Without a language it is what a command prints.
    if (block.language.empty()) continue;
    languages.insert(block.language);
    bool isFound = false;
    for (std::string const& file : files) isFound = isFound || file.find(block.code) != std::string::npos;
    EXPECT_TRUE(isFound) << block.code;
  }
  EXPECT_EQ(languages, std::set<std::string>({"cmake", "cpp", "rc"}));
}

}  // namespace
