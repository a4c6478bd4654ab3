// SPDX-License-Identifier: MIT
//
// The resources that the shipped library carries: its symbols, its version data and its string table.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "kvbase/kvbase.h"
#include "kvbase/platform/module_api.h"
#include "tests/support/module_files.h"
#include "tests/support/narrow_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

class LibraryResources : public ::testing::Test {
 protected:
  platform::ModuleApi& modules_ = platform::nativeModules();
  LoadedModule library_{programFile().parent_path() / moduleFile("KVBase")};

  std::string header() {
    HRSRC const resource = modules_.findResourceOfLanguage(library_.handle(), KVW("METADATA"), KVW("RESOURCE.H"), 1031);
    if (resource == nullptr) return "";
    platform::ResourceBytes const bytes = modules_.resourceBytes(library_.handle(), resource);
    return std::string(static_cast<char const*>(bytes.data), bytes.size);
  }
};

struct Symbol {
  char const* name;
  unsigned int number;
};

std::vector<Symbol> const kSingleSymbols = {
    {"ID_LEGACY_START", 32768}, {"ID_LEGACY_END", 40959}, {"ID_CMD_START", 40960},   {"ID_CMD_END", 57342},
    {"ID_NULL", 57343},         {"IDR_MAINFRAME", 1},     {"IDR_SCANTYPE", 2},       {"IDR_SCANTYPE2", 3},
    {"IDDEFAULTS", 3},          {"IDAPPLY", 4},           {"IDR_PROJECT_TYPE2", 24}, {"IDR_APPTYPE", 25},
    {"IDR_E57TYPE", 26},        {"IDD_ABOUTBOX", 4096},   {"IDS_PROJNAME", 4096},
};
// Numbered from 4096 on.
std::vector<char const*> const kControls = {
    "IDC_ANGLE_THRESHOLD",
    "IDC_ANGLE_THRESHOLD_SPIN",
    "IDC_APPLY",
    "IDC_EXPORT_FILENAME",
    "IDC_EXPORT_NAMES",
    "IDC_EXPORT_NAMESLEVEL",
    "IDC_MEASURE",
    "IDC_NAME",
    "IDC_REFLECTION_THRESHOLD",
    "IDC_REFLECTION_THRESHOLD_SPIN",
    "IDC_SCAN_RADIUS_SPIN",
    "IDC_SCAN_STEP_SPIN",
    "IDC_SNAP_RADIUS_SPIN",
    "IDC_SYSTEM_ID",
    "IDC_UNBOUNDED_PLANES",
    "IDC_EDGEDETECTOR_SETTINGS",
    "IDC_LENGTH",
    "IDC_POS_X",
    "IDC_POS_Y",
    "IDC_POS_Z",
    "IDC_STATIC_ANGLE1",
    "IDC_STATIC_ANGLE2",
    "IDC_STATIC_ANGLE3",
    "IDC_STATIC_ANGLE4",
    "IDC_STATIC_ANGLE5",
    "IDC_STATIC_LENGTH1",
    "IDC_STATIC_LENGTH2",
    "IDC_STATIC_LENGTH3",
    "IDC_STATIC_LENGTH4",
    "IDC_STATIC_LENGTH5",
    "IDC_STATIC_LENGTH6",
    "IDC_STATIC_LENGTH7",
    "IDC_STATIC_LENGTH8",
    "IDC_STATIC_LENGTH9",
    "IDC_STATIC_LENGTH10",
    "IDC_STATIC_LENGTH11",
    "IDC_STATIC_LENGTH12",
    "IDC_STATIC_SMALLLENGTH1",
    "IDC_STATIC_SMALLLENGTH2",
    "IDC_STATIC_SMALLLENGTH3",
    "IDC_CONTROL1",
    "IDC_CONTROL2",
    "IDC_CONTROL3",
    "IDC_CONTROL4",
    "IDC_CONTROL5",
    "IDC_CONTROL6",
    "IDC_CONTROL7",
    "IDC_CONTROL8",
    "IDC_CONTROL9",
    "IDC_CONTROL10",
};

std::vector<Symbol> allSymbols() {
  std::vector<Symbol> symbols = kSingleSymbols;
  unsigned int number = 4096;
  for (char const* const name : kControls) symbols.push_back({name, number++});
  return symbols;
}

std::string joined(std::set<String, StringLess2> const& names) {
  std::string text;
  for (String const& name : names) text += (text.empty() ? "" : " ") + narrow(static_cast<wchar const*>(name));
  return text;
}

TEST_F(LibraryResources, TheHeaderHas127LinesThatEndAsOnWindows) {
  std::string const text = header();
  ASSERT_FALSE(text.empty());
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 127);
  EXPECT_EQ(std::count(text.begin(), text.end(), '\r'), 127);
  for (std::size_t at = text.find('\n'); at != std::string::npos; at = text.find('\n', at + 1)) {
    EXPECT_EQ(text[at - 1], '\r');
  }
  EXPECT_EQ(text.substr(text.size() - 2), "\r\n");
  EXPECT_TRUE(std::all_of(text.begin(), text.end(), [](char c) { return c >= 0; })) << "the same in every code page";
}

TEST_F(LibraryResources, TheHeaderOpensWithComments) {
  std::istringstream lines(header());
  std::string line;
  int comments = 0;
  while (std::getline(lines, line) && line.substr(0, 2) == "//") {
    ++comments;
    EXPECT_EQ(line.find("#define"), std::string::npos);
  }
  EXPECT_GE(comments, 10);
}

TEST_F(LibraryResources, TheHeaderExistsInGermanOnly) {
  std::set<unsigned short> languages;
  EXPECT_TRUE(modules_.resourceLanguages(library_.handle(), KVW("METADATA"), KVW("RESOURCE.H"), languages));
  EXPECT_EQ(languages, std::set<unsigned short>{1031});
}

TEST_F(LibraryResources, TheHeaderDefines65Symbols) {
  std::vector<Symbol> const symbols = allSymbols();
  ASSERT_EQ(symbols.size(), 65u);
  EXPECT_EQ(symbols.back().number, 4145u);

  std::string const text = header();
  std::size_t definitions = 0;
  for (std::size_t at = text.find("#define"); at != std::string::npos; at = text.find("#define", at + 1)) ++definitions;
  EXPECT_EQ(definitions, 65u);

  SymbolTable table;
  std::istringstream stream(text);
  EXPECT_TRUE(table.parseHeaderFile(stream));
  for (Symbol const& symbol : symbols) {
    EXPECT_EQ(table[String(widen(symbol.name).c_str())], symbol.number) << symbol.name;
  }
}

TEST_F(LibraryResources, NumbersOfTheHeaderAreSharedOnPurpose) {
  SymbolTable table;
  std::istringstream stream(header());
  EXPECT_TRUE(table.parseHeaderFile(stream));
  EXPECT_EQ(joined(table.lookupValue(3)), "IDDEFAULTS IDR_SCANTYPE2");
  EXPECT_EQ(joined(table.lookupValue(4096)), "IDC_ANGLE_THRESHOLD IDD_ABOUTBOX IDS_PROJNAME");
  EXPECT_EQ(joined(table.lookupValue(4112)), "IDC_LENGTH");
  EXPECT_EQ(table.lookupSymbol(KVW("idc_length")), 4112u);
  EXPECT_EQ(joined(table.lookupValue(4146)), "");
}

TEST_F(LibraryResources, TheStringTableHasTheNameOfTheProject) {
  wstring text;
  EXPECT_TRUE(modules_.stringTableEntry(library_.handle(), 4096, text));
  EXPECT_EQ(narrow(text), "KVBase");
  EXPECT_FALSE(modules_.stringTableEntry(library_.handle(), 4097, text));
}

TEST_F(LibraryResources, TheVersionDataNamesTheLibrary) {
  wstring path;
  ASSERT_TRUE(modules_.modulePath(library_.handle(), path));
  ulong32 handle = 0;
  ulong32 const size = modules_.versionInfoSize(path.c_str(), handle);
  ASSERT_NE(size, 0u);
  std::vector<char> block(size);
  ASSERT_TRUE(modules_.versionInfo(path.c_str(), handle, size, block.data()));

  void const* value = nullptr;
  ulong32 length = 0;
  ASSERT_TRUE(modules_.queryVersion(block.data(), KVW("\\"), value, length));
  std::uint32_t fixed[13];
  ASSERT_EQ(length, sizeof fixed);
  std::memcpy(fixed, value, sizeof fixed);
  EXPECT_EQ(fixed[0], 0xFEEF04BDu);
  EXPECT_EQ(fixed[2], 10u << 16);
  EXPECT_EQ(fixed[3], 9505u);

  ASSERT_TRUE(modules_.queryVersion(block.data(), KVW("\\VarFileInfo\\Translation"), value, length));
  std::uint16_t translation[2];
  ASSERT_EQ(length, sizeof translation);
  std::memcpy(translation, value, sizeof translation);
  EXPECT_EQ(translation[0], 0x0409);
  EXPECT_EQ(translation[1], 1200);

  struct Row {
    wchar const* key;
    char const* text;
  };
  for (Row const& row :
       {Row{KVW("CompanyName"), "VOLQ Fabrication GmbH"}, Row{KVW("FileVersion"), "10.0.0.9505"},
        Row{KVW("InternalName"), "KVBase"}, Row{KVW("ProductName"), "KVBase"}, Row{KVW("ProductVersion"), "10.0"}}) {
    wstring const query = wstring(KVW("\\StringFileInfo\\040904b0\\")) + row.key;
    ASSERT_TRUE(modules_.queryVersion(block.data(), query.c_str(), value, length)) << row.text;
    EXPECT_EQ(narrow(static_cast<wchar const*>(value)), row.text);
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
