// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/debug/symbol_index.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "kvbase/platform/linux/debug/debug_session.h"
#include "tests/platform/linux/debug/debug_help.h"

namespace KV_1_1 {
namespace testing {
namespace {

// --- Scripted symbols ---

struct ScriptedSymbol {
  std::uint64_t start;
  std::uint64_t size;
  unsigned char binding;
  char const* name;
  unsigned char type;
  std::uint16_t section;
};
std::vector<ScriptedSymbol> scripted;

int countScripted(Dwfl_Module*) {
  return static_cast<int>(scripted.size());
}

char const* scriptedSymbol(Dwfl_Module*, int index, GElf_Sym* symbol, GElf_Addr* start, GElf_Word*, Elf**,
                           Dwarf_Addr*) {
  ScriptedSymbol const& from = scripted[static_cast<std::size_t>(index)];
  *symbol = {};
  symbol->st_size = from.size;
  symbol->st_info = GELF_ST_INFO(from.binding, from.type);
  symbol->st_shndx = from.section;
  *start = from.start;
  return from.name;
}

ScriptedSymbol function(std::uint64_t start, std::uint64_t size, unsigned char binding = STB_GLOBAL) {
  return {start, size, binding, "f", STT_FUNC, 1};
}

platform::SymbolIndex indexed(std::vector<ScriptedSymbol> const& symbols) {
  scripted = symbols;
  platform::LibdwFunctions functions = {};
  functions.symbolCount = &countScripted;
  functions.symbol = &scriptedSymbol;
  EXPECT_TRUE(platform::SymbolIndex::canRead(functions));
  platform::SymbolIndex index;
  index.read(functions, nullptr);
  return index;
}

TEST(LinuxSymbolIndex, RangeEndsBeforeItsEnd) {
  auto const index = indexed({function(20, 10), function(10, 5)});
  EXPECT_EQ(index.find(9), -1);
  EXPECT_EQ(index.find(10), 1);
  EXPECT_EQ(index.find(14), 1);
  EXPECT_EQ(index.find(15), -1);
  EXPECT_EQ(index.find(20), 0);
  EXPECT_EQ(index.find(29), 0);
  EXPECT_EQ(index.find(30), -1);
}

TEST(LinuxSymbolIndex, NoSymbolsFindNothing) {
  EXPECT_EQ(indexed({}).find(5), -1);
}

TEST(LinuxSymbolIndex, OtherKindsAreLeftOut) {
  auto const index = indexed({function(10, 0),
                              {10, 5, STB_LOCAL, "", STT_FUNC, 1},
                              {10, 5, STB_LOCAL, nullptr, STT_FUNC, 1},
                              {10, 5, STB_LOCAL, "s", STT_SECTION, 1},
                              {10, 5, STB_LOCAL, "f", STT_FILE, 1},
                              {10, 5, STB_GLOBAL, "t", STT_TLS, 1},
                              {10, 5, STB_GLOBAL, "u", STT_FUNC, SHN_UNDEF}});
  EXPECT_EQ(index.find(12), -1);
}

TEST(LinuxSymbolIndex, FunctionThatIsSeenFromOutsideGoesBeforeALocalOne) {
  EXPECT_EQ(indexed({function(12, 2, STB_LOCAL), function(10, 10)}).find(12), 1);
  EXPECT_EQ(indexed({function(12, 2, STB_LOCAL), function(10, 10, STB_WEAK)}).find(12), 1);
}

TEST(LinuxSymbolIndex, ClosestStartThenShortestThenStrongestThenFirst) {
  EXPECT_EQ(indexed({function(10, 10), function(12, 20)}).find(13), 1);
  EXPECT_EQ(indexed({function(10, 10), function(10, 5)}).find(13), 1);
  EXPECT_EQ(indexed({function(10, 10, STB_WEAK), function(10, 10)}).find(13), 1);
  EXPECT_EQ(indexed({function(10, 10), function(10, 10)}).find(13), 0);
}

TEST(LinuxSymbolIndex, LongRangeIsFoundBehindShortOnes) {
  auto const index = indexed({function(0, 1000), function(10, 5), function(20, 5), function(30, 5)});
  EXPECT_EQ(index.find(40), 0);
  EXPECT_EQ(index.find(22), 2);
}

TEST(LinuxSymbolIndex, AgreesWithASearchThroughAllSymbols) {
  std::mt19937 random(1);
  for (int round = 0; round < 200; ++round) {
    std::vector<ScriptedSymbol> symbols;
    for (unsigned i = random() % 12; i > 0; --i) symbols.push_back(function(random() % 40, random() % 20, STB_WEAK));
    auto const index = indexed(symbols);
    for (std::uint64_t address = 0; address < 60; ++address) {
      int expected = -1;
      for (int i = 0; i < static_cast<int>(symbols.size()); ++i) {
        ScriptedSymbol const& each = symbols[static_cast<std::size_t>(i)];
        if (address < each.start || address >= each.start + each.size) continue;
        if (expected >= 0) {
          ScriptedSymbol const& best = symbols[static_cast<std::size_t>(expected)];
          if (each.start < best.start || (each.start == best.start && each.size >= best.size)) continue;
        }
        expected = i;
      }
      ASSERT_EQ(index.find(address), expected) << round << ' ' << address;
    }
  }
}

// --- Real modules ---

// libdw looks at all symbols for each address, so there are only some addresses.
TEST(LinuxSymbolIndex, FindsInRealModulesWhatLibdwFinds) {
  DebugHelp const help;
  std::mt19937_64 random(1);
  for (void* const function : {reinterpret_cast<void*>(&countScripted), dlsym(RTLD_DEFAULT, "qsort"),
                               dlsym(RTLD_DEFAULT, "_ZSt9terminatev")}) {
    auto const inside = reinterpret_cast<std::uint64_t>(function);
    EXPECT_NE(help.symbolName(inside), "");
    platform::DebugSession& session = platform::DebugSession::instance();
    auto const lock = session.lock();
    platform::DebugSession::Module* const module = session.moduleAt(inside);
    ASSERT_NE(module, nullptr);
    platform::LibdwFunctions const& libdw = session.libdw();
    int found = 0;
    for (int i = 0; i < 60; ++i) {
      std::uint64_t const span = module->loaded.end - module->loaded.start;
      std::uint64_t const address = i % 2 == 0 ? module->loaded.start + random() % span : inside + random() % 4096;
      GElf_Off offset = 0;
      GElf_Sym symbol = {};
      char const* const expected =
          libdw.symbolOfAddress(module->handle, address, &offset, &symbol, nullptr, nullptr, nullptr);
      int const number = module->symbols.find(address);
      if (number < 0) {
        EXPECT_TRUE(expected == nullptr || symbol.st_size == 0) << expected;
        continue;
      }
      ++found;
      GElf_Addr start = 0;
      char const* const name = libdw.symbol(module->handle, number, &symbol, &start, nullptr, nullptr, nullptr);
      EXPECT_STREQ(name, expected) << module->loaded.path;
      EXPECT_EQ(start, address - offset) << name;
    }
    EXPECT_GT(found, 0) << module->loaded.path;
  }
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
