// SPDX-License-Identifier: MIT
//
// The German texts of scanshelf fit the English ones. Both are read from their files.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "tests/examples/scanshelf_texts.h"

namespace scanshelf {
namespace {

namespace platform = KV_1_1::platform;

class ScanshelfTexts : public ScanshelfTest {
 protected:
  ScanshelfTexts() : german_(platform::modules().loadAsData(fixture(KVW("scanshelf_german.dll")))) {}
  ~ScanshelfTexts() override { EXPECT_TRUE(platform::modules().freeLibrary(german_)); }

  // The symbols in the module's own header.
  std::vector<unsigned> numbers() {
    std::vector<unsigned> all;
    for (unsigned number = 0; number <= 0xFFFF; ++number) {
      if (!module().getResourceSymbols()[number].empty()) all.push_back(number);
    }
    return all;
  }
  std::string germanHelp() const {
    platform::ModuleApi& modules = platform::modules();
    HRSRC const help = modules.findResource(german_, KVW("HELP.TXT"), KVW("TEXT"));
    platform::ResourceBytes const bytes = modules.resourceBytes(german_, help);
    return std::string(static_cast<char const*>(bytes.data), bytes.size);
  }
  std::string german(unsigned number) const {
    wstring text;
    EXPECT_TRUE(platform::modules().stringTableEntry(german_, number, text)) << number;
    return utf8(String(text.c_str()));
  }

 private:
  HINSTANCE const german_;
};

// The conversions of a pattern, each up to its letter.
//   "%ls: %3u%%" => "%ls %3u %%"
std::string conversionsOf(std::string const& pattern) {
  std::string conversions;
  for (std::size_t i = pattern.find('%'); i != std::string::npos; i = pattern.find('%', i)) {
    std::size_t const end = pattern.find_first_of("%sudcf", i + 1);
    conversions += pattern.substr(i, end + 1 - i) + " ";
    i = end + 1;
  }
  return conversions;
}

// The options that a help text tells, which begin a line with two blanks and a dash.
std::vector<std::string> optionsOf(std::string const& help) {
  std::vector<std::string> options;
  std::istringstream lines(help);
  for (std::string line; std::getline(lines, line);) {
    if (line.compare(0, 3, "  -") == 0) options.push_back(line.substr(0, line.find_first_of(" <", 7)));
  }
  return options;
}

TEST_F(ScanshelfTexts, EachSymbolHasATextInBothLanguages) {
  EXPECT_GT(numbers().size(), 70u);
  for (unsigned const number : numbers()) {
    EXPECT_STRNE(utf8(textOf(number)), "Error loading string resource!") << number;
    EXPECT_NE(german(number), "") << number;
  }
}

TEST_F(ScanshelfTexts, PatternsTakeTheSameValues) {
  for (unsigned const number : numbers()) {
    EXPECT_EQ(conversionsOf(german(number)), conversionsOf(utf8(textOf(number)))) << number;
  }
}

TEST_F(ScanshelfTexts, NoNumberHasTwoNames) {
  for (unsigned const number : numbers()) EXPECT_EQ(module().getResourceSymbols()[number].size(), 1u) << number;
}

TEST_F(ScanshelfTexts, HelpHasTheSameOptionsInBothLanguages) {
  std::vector<std::string> const english = optionsOf(utf8(helpText()));
  EXPECT_EQ(optionsOf(germanHelp()), english);
  EXPECT_EQ(english.size(), 11u);
}

}  // namespace
}  // namespace scanshelf
