// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <ostream>
#include <string>
#include <vector>

#include "kvbase/platform/debug_api.h"
#include "kvbase/platform/error_api.h"
#include "kvbase/platform/error_codes.h"
#include "tests/platform/linux/debug/debug_help.h"
#include "tests/support/allocation_failure.h"

namespace KV_1_1 {
namespace testing {
namespace {

ulong32 lastError() {
  return platform::nativeErrors().lastError();
}

struct NameRow {
  char const* name;
  char const* mangled;
  char const* complete;
  char const* bare;
};
void PrintTo(NameRow const& row, std::ostream* out) {
  *out << row.name;
}

NameRow const kNames[] = {
    {"of_c", "main", "main", "main"},
    {"empty", "", "", ""},
    {"function", "_Z3addii", "add(int, int)", "add"},
    {"without_parameters", "_Z5startv", "start()", "start"},
    {"scoped", "_ZN4scan6Reader4readEPKc", "scan::Reader::read(char const*)", "scan::Reader::read"},
    {"const_method", "_ZNK4scan6Reader4sizeEv", "scan::Reader::size() const", "scan::Reader::size"},
    {"method_of_an_lvalue", "_ZNVKR4scan6Reader4sizeEv", "scan::Reader::size() const volatile &", "scan::Reader::size"},
    {"method_of_an_rvalue", "_ZNO4scan6Reader4takeEv", "scan::Reader::take() &&", "scan::Reader::take"},
    {"conversion_to_a_reference", "_ZN4scan6ReadercvRKiEv", "scan::Reader::operator int const&()",
     "scan::Reader::operator int const&"},
    {"constructor", "_ZN4scan6ReaderC2Ev", "scan::Reader::Reader()", "scan::Reader::Reader"},
    {"destructor", "_ZN4scan6ReaderD1Ev", "scan::Reader::~Reader()", "scan::Reader::~Reader"},
    {"operator", "_ZN4scan5PointeqERKS0_", "scan::Point::operator==(scan::Point const&)", "scan::Point::operator=="},
    {"template_function", "_Z3maxIiET_S0_S0_", "int max<int>(int, int)", "max<int>"},
    {"method_of_a_template", "_ZN4scan3BoxIdE3setEd", "scan::Box<double>::set(double)", "scan::Box<double>::set"},
    {"template_method", "_ZN4scan3BoxIdE3setIiEEvT_", "void scan::Box<double>::set<int>(int)",
     "scan::Box<double>::set<int>"},
    {"unnamed_namespace", "_ZN12_GLOBAL__N_15countEv", "(anonymous namespace)::count()",
     "(anonymous namespace)::count"},
    {"with_a_mark_of_the_compiler", "_Z4nameB5cxx11i", "name[abi:cxx11](int)", "name"},
    {"part_of_a_function", "_ZN4scan4loadEv.isra.0", "scan::load() [clone .isra.0]", "scan::load"},
    {"data", "_ZN4scan5tableE", "scan::table", "scan::table"},
    {"not_mangled_right", "_Zqq", "_Zqq", "_Zqq"},
    {"of_windows", "?add@@YAHHH@Z", "?add@@YAHHH@Z", "?add@@YAHHH@Z"},
};

class LinuxUndecoration : public ::testing::TestWithParam<NameRow> {};
INSTANTIATE_TEST_SUITE_P(Rows, LinuxUndecoration, ::testing::ValuesIn(kNames),
                         [](auto const& row) { return std::string(row.param.name); });

TEST_P(LinuxUndecoration, GivesBothForms) {
  DebugHelp const help;
  NameRow const& row = GetParam();
  for (int i = 0; i < 2; ++i) {  // the second time as remembered
    EXPECT_EQ(help.undecorated(row.mangled, debug_help::kUndecorateComplete), row.complete);
    EXPECT_EQ(help.undecorated(row.mangled, debug_help::kUndecorateNameOnly), row.bare);
  }
}

TEST(LinuxUndecorationLimits, TextIsCutAndItsSizeReturned) {
  DebugHelp const help;
  char text[8] = "xxxxxxx";
  EXPECT_EQ(help.unDecorateSymbolName("_ZN4scan6Reader4readEPKc", text, 5, debug_help::kUndecorateComplete), 4u);
  EXPECT_STREQ(text, "scan");
  EXPECT_EQ(text[5], 'x');
  EXPECT_EQ(help.unDecorateSymbolName("_Z3addii", text, 1, debug_help::kUndecorateComplete), 0u);
  EXPECT_STREQ(text, "");
  EXPECT_EQ(help.unDecorateSymbolName("_Z3addii", text, 0, debug_help::kUndecorateComplete), 0u);
  EXPECT_EQ(help.unDecorateSymbolName(nullptr, text, 8, debug_help::kUndecorateComplete), 0u);
  EXPECT_EQ(help.unDecorateSymbolName("_Z3addii", nullptr, 8, debug_help::kUndecorateComplete), 0u);
}

TEST(LinuxUndecorationLimits, FailingAllocationGivesNothing) {
  DebugHelp const help;
  for (int n = 1;; ++n) {
    char text[64] = "";
    AllocationFailure scope(n);
    ulong32 const size =
        help.unDecorateSymbolName("_ZN5rarer4nameEPKcS1_", text, sizeof text, debug_help::kUndecorateComplete);
    ulong32 const error = lastError();
    scope.end();
    if (!scope.failed()) {
      EXPECT_STREQ(text, "rarer::name(char const*, char const*)");
      break;
    }
    EXPECT_EQ(size, 0u) << n;
    EXPECT_EQ(error, platform::kNotEnoughMemory) << n;
  }
}

// --- Symbols, lines and modules

std::uint64_t addressOfFunction(void (*function)()) {
  return reinterpret_cast<std::uint64_t>(function);
}

void someFunction() {}
constexpr int kSomeLine = __LINE__ - 1;

TEST(LinuxSymbols, SymbolHasStartSizeAndDistance) {
  DebugHelp const help;
  alignas(debug_help::Symbol64) char block[1056] = {};
  auto* const symbol = reinterpret_cast<debug_help::Symbol64*>(block);
  symbol->sizeOfStruct = 32;
  symbol->maxNameLength = 1024;
  std::uint64_t displacement = 99;
  std::uint64_t const address = addressOfFunction(&someFunction);
  ASSERT_EQ(help.symGetSymFromAddr64(DebugHelp::process(), address + 3, &displacement, symbol), 1);
  EXPECT_EQ(displacement, 3u);
  EXPECT_EQ(symbol->address, address);
  EXPECT_GT(symbol->size, 0u);
  EXPECT_THAT(symbol->name, ::testing::HasSubstr("someFunction"));
  EXPECT_EQ(help.symGetSymFromAddr64(DebugHelp::process(), address, nullptr, symbol), 1);
}

TEST(LinuxSymbols, LongNameIsCutToTheLimit) {
  DebugHelp const help;
  alignas(debug_help::Symbol64) char block[1056];
  memset(block, 'x', sizeof block);
  auto* const symbol = reinterpret_cast<debug_help::Symbol64*>(block);
  symbol->sizeOfStruct = 32;
  symbol->maxNameLength = 6;
  std::uint64_t displacement = 0;
  ASSERT_EQ(help.symGetSymFromAddr64(nullptr, addressOfFunction(&someFunction), &displacement, symbol), 1);
  EXPECT_STREQ(symbol->name, "_ZN6K");
  EXPECT_EQ(symbol->name[6], 'x');
  symbol->name[0] = 'y';
  symbol->maxNameLength = 0;
  EXPECT_EQ(help.symGetSymFromAddr64(nullptr, addressOfFunction(&someFunction), &displacement, symbol), 1);
  EXPECT_EQ(symbol->name[0], 'y');
}

TEST(LinuxSymbols, LineHasFileAndDistance) {
  DebugHelp const help;
  debug_help::Line64 line = {};
  line.sizeOfStruct = sizeof line;
  ulong32 displacement = 99;
  std::uint64_t const address = addressOfFunction(&someFunction);
  ASSERT_EQ(help.symGetLineFromAddr64(nullptr, address + 1, &displacement, &line), 1);
  EXPECT_EQ(displacement, 1u);
  EXPECT_EQ(line.lineNumber, static_cast<ulong32>(kSomeLine));
  EXPECT_EQ(line.address, address);
  EXPECT_THAT(line.fileName, ::testing::EndsWith("tests/platform/linux/debug/symbols_test.cpp"));
}

TEST(LinuxSymbols, LineAfterSymbolIsTheSame) {
  DebugHelp const help;
  std::uint64_t const address = addressOfFunction(&someFunction);
  for (int i = 0; i < 3; ++i) {
    EXPECT_THAT(help.symbolName(address), ::testing::HasSubstr("someFunction"));
    debug_help::Line64 line = {};
    line.sizeOfStruct = sizeof line;
    ulong32 displacement = 99;
    ASSERT_EQ(help.symGetLineFromAddr64(nullptr, address, &displacement, &line), 1);
    EXPECT_EQ(line.lineNumber, static_cast<ulong32>(kSomeLine));
    EXPECT_EQ(displacement, 0u);
  }
}

// What has been looked up once is remembered, so that nothing is allocated, and no text is made, for it again.
TEST(LinuxSymbols, KnownAddressesAreNotLookedUpAgain) {
  DebugHelp help;
  _CONTEXT context = emptyContext();
  platform::nativeDebug().contextCapture()(&context);
  std::vector<Frame> const frames = help.walk(context);
  ASSERT_GT(frames.size(), 5u);
  alignas(debug_help::Symbol64) char block[1056] = {};
  auto* const symbol = reinterpret_cast<debug_help::Symbol64*>(block);
  symbol->sizeOfStruct = sizeof *symbol;
  symbol->maxNameLength = 1024;
  debug_help::Line64 line = {};
  line.sizeOfStruct = sizeof line;
  debug_help::ModuleInfo64 info = {};
  info.sizeOfStruct = sizeof info;
  char text[1024];
  // By the second round each has been asked for as a frame and as an address.
  for (bool const isFirst : {true, false}) {
    AllocationFailure scope(0);
    for (Frame const& frame : frames) {
      std::uint64_t distance = 0;
      ulong32 lineDistance = 0;
      if (help.symGetSymFromAddr64(nullptr, frame.address, &distance, symbol) != 0) {
        help.unDecorateSymbolName(symbol->name, text, sizeof text, debug_help::kUndecorateComplete);
        help.unDecorateSymbolName(symbol->name, text, sizeof text, debug_help::kUndecorateNameOnly);
      }
      help.symGetLineFromAddr64(nullptr, frame.address, &lineDistance, &line);
      help.symGetModuleInfo64(nullptr, frame.address, &info);
    }
    scope.end();
    if (!isFirst) EXPECT_EQ(scope.allocations(), 0);
  }
}

TEST(LinuxSymbols, AddressOutsideAllModulesIsAFailure) {
  DebugHelp const help;
  for (std::uint64_t const address : {std::uint64_t{0}, std::uint64_t{0x10}, ~std::uint64_t{0}}) {
    EXPECT_EQ(help.symbolName(address), "") << address;
    EXPECT_EQ(lastError(), platform::kModuleNotFound);
    debug_help::Line64 line = {};
    line.sizeOfStruct = sizeof line;
    ulong32 displacement = 0;
    EXPECT_EQ(help.symGetLineFromAddr64(nullptr, address, &displacement, &line), 0);
    debug_help::ModuleInfo64 info = {};
    info.sizeOfStruct = sizeof info;
    EXPECT_EQ(help.symGetModuleInfo64(nullptr, address, &info), 0);
    EXPECT_EQ(lastError(), platform::kModuleNotFound);
    EXPECT_EQ(help.symGetModuleBase64(nullptr, address), 0u);
    EXPECT_EQ(help.symFunctionTableAccess64(nullptr, address), nullptr);
  }
}

TEST(LinuxSymbols, RecordsOfAnotherSizeAreRefused) {
  DebugHelp const help;
  std::uint64_t const address = addressOfFunction(&someFunction);
  debug_help::Symbol64 symbol = {};
  std::uint64_t distance = 0;
  EXPECT_EQ(help.symGetSymFromAddr64(nullptr, address, &distance, &symbol), 0);
  EXPECT_EQ(lastError(), platform::kInvalidParameter);
  EXPECT_EQ(help.symGetSymFromAddr64(nullptr, address, &distance, nullptr), 0);
  debug_help::Line64 line = {};
  ulong32 displacement = 0;
  EXPECT_EQ(help.symGetLineFromAddr64(nullptr, address, &displacement, &line), 0);
  line.sizeOfStruct = sizeof line;
  EXPECT_EQ(help.symGetLineFromAddr64(nullptr, address, nullptr, &line), 0);
  debug_help::ModuleInfo64 info = {};
  EXPECT_EQ(help.symGetModuleInfo64(nullptr, address, &info), 0);
  EXPECT_EQ(lastError(), platform::kInvalidParameter);
}

TEST(LinuxSymbols, ModuleHasNamesRangeAndKind) {
  DebugHelp const help;
  std::uint64_t const address = addressOfFunction(&someFunction);
  help.symbolName(address);
  debug_help::ModuleInfo64 info = {};
  info.sizeOfStruct = sizeof info;
  ASSERT_EQ(help.symGetModuleInfo64(nullptr, address, &info), 1);
  std::string program;
  ASSERT_TRUE(platform::nativeDebug().programPath(program));
  EXPECT_EQ(std::string(info.loadedImageName), program.substr(0, 255));
  EXPECT_EQ(std::string(info.imageName), program.substr(0, 255));
  EXPECT_EQ(std::string(info.moduleName), program.substr(program.rfind('/') + 1));
  EXPECT_LE(info.baseOfImage, address);
  EXPECT_GT(info.baseOfImage + info.imageSize, address);
  EXPECT_EQ(info.symbolType, 7);  // with debug data
  EXPECT_EQ(help.symGetModuleBase64(nullptr, address), info.baseOfImage);
}

TEST(LinuxSymbols, ModuleIsRegisteredByItsLoadAddressOnly) {
  DebugHelp const help;
  std::uint64_t const base = help.symGetModuleBase64(nullptr, addressOfFunction(&someFunction));
  ASSERT_NE(base, 0u);
  EXPECT_EQ(help.symLoadModule64(nullptr, nullptr, "any", "any", base, 1), base);
  EXPECT_EQ(help.symLoadModule64(nullptr, nullptr, "any", "any", base + 16, 1), 0u);
  EXPECT_EQ(lastError(), platform::kModuleNotFound);
  EXPECT_EQ(help.symLoadModule64(nullptr, nullptr, "any", "any", 0, 1), 0u);
}

TEST(LinuxSymbols, FunctionHasAnEntryInTheTable) {
  DebugHelp const help;
  std::uint64_t const address = addressOfFunction(&someFunction);
  auto const* const range = static_cast<std::uint32_t const*>(help.symFunctionTableAccess64(nullptr, address));
  ASSERT_NE(range, nullptr);
  std::uint64_t const base = help.symGetModuleBase64(nullptr, address);
  EXPECT_EQ(base + range[0], address);
  EXPECT_GT(range[1], range[0]);
}

TEST(LinuxSymbols, OptionsAreKept) {
  DebugHelp const help;
  ulong32 const before = help.symGetOptions();
  EXPECT_EQ(help.symSetOptions(0x210), 0x210u);
  EXPECT_EQ(help.symGetOptions(), 0x210u);
  help.symSetOptions(before);
}

TEST(LinuxSymbols, SearchPathIsTheOneGiven) {
  DebugHelp const help;
  EXPECT_EQ(help.symInitialize(nullptr, "/a;/b", 0), 1);
  char path[1024] = "x";
  EXPECT_EQ(help.symGetSearchPath(nullptr, path, sizeof path), 1);
  EXPECT_STREQ(path, "/a;/b");
  EXPECT_EQ(help.symGetSearchPath(nullptr, path, 3), 1);
  EXPECT_STREQ(path, "/a");
  EXPECT_EQ(help.symGetSearchPath(nullptr, path, 0), 0);
  EXPECT_EQ(help.symInitialize(nullptr, nullptr, 0), 1);
  EXPECT_EQ(help.symGetSearchPath(nullptr, path, sizeof path), 1);
  EXPECT_STREQ(path, "");
  EXPECT_EQ(help.symCleanup(nullptr), 1);
}

// Another walker may be at work, so one that ends leaves it what it needs.
TEST(LinuxSymbols, CleanupLeavesOthersAtWork) {
  DebugHelp const first;
  DebugHelp const second;
  first.symInitialize(nullptr, nullptr, 0);
  second.symInitialize(nullptr, nullptr, 0);
  EXPECT_EQ(first.symCleanup(nullptr), 1);
  EXPECT_THAT(second.symbolName(addressOfFunction(&someFunction)), ::testing::HasSubstr("someFunction"));
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
