// SPDX-License-Identifier: MIT
//
// The Module of the shipped library after the load: started, with its name, its symbols and its texts.
#include <gtest/gtest.h>

#include <istream>
#include <iterator>
#include <set>
#include <string>

#include "kvbase/kvbase.h"
#include "kvbase/platform/framework_api.h"
#include "tests/support/narrow_text.h"

namespace KV_1_1 {
namespace testing {
namespace {

// As a static initialiser of the program finds it, which runs behind the start of the library.
std::string const nameBeforeMain = narrow(static_cast<wchar const*>(Module::begin()->getModuleName()));

TEST(LibraryModule, IsTheFirstAndHasTheNameOfTheFile) {
  ASSERT_NE(Module::begin(), Module::end());
  EXPECT_EQ(narrow(static_cast<wchar const*>(Module::begin()->getModuleName())), "KVBase");
  EXPECT_EQ(nameBeforeMain, "KVBase");
}

TEST(LibraryModule, OwnsTheClassesOfTheLibrary) {
  EXPECT_EQ(&BaseNode::Class()->module(), &*Module::begin());
  EXPECT_EQ(&Directory::Class()->module(), &*Module::begin());
}

TEST(LibraryModule, HasTheSymbolsOfItsHeader) {
  SymbolTable const& symbols = Module::begin()->getResourceSymbols();
  EXPECT_EQ(symbols.lookupSymbol(KVW("IDC_LENGTH")), 4112u);
  EXPECT_EQ(symbols.lookupSymbol(KVW("idc_control10")), 4145u);
  std::set<String, StringLess2> const three = symbols.lookupValue(3);
  ASSERT_EQ(three.size(), 2u);
  EXPECT_EQ(*three.begin(), KVW("IDDEFAULTS"));
  EXPECT_EQ(*three.rbegin(), KVW("IDR_SCANTYPE2"));
}

TEST(LibraryModule, FindsItsHeaderInAnyCase) {
  Module const& module = *Module::begin();
  ulong32 locale = 1033;
  HINSTANCE const holder = module.findResource(KVW("Resource.h"), KVW("metadata"), false, &locale);
  EXPECT_NE(holder, nullptr);
  EXPECT_EQ(locale & 0xFFFF, 1031u);  // its only language
  auto const stream = module.loadResource(KVW("RESOURCE.H"), KVW("METADATA"), true);
  ASSERT_NE(stream.get(), nullptr);
  std::string const read{std::istreambuf_iterator<char>(*stream), std::istreambuf_iterator<char>()};
  EXPECT_EQ(module.loadStringResource(KVW("RESOURCE.H"), KVW("METADATA"), false), read);
  EXPECT_EQ(module.getResource(KVW("RESOURCE.H"), KVW("METADATA"), false, nullptr).second, read.size());
}

TEST(LibraryModule, HasNoResourceOfAnotherName) {
  Module const& module = *Module::begin();
  EXPECT_EQ(module.findResource(KVW("RESOURCE.C"), KVW("METADATA"), true, nullptr), nullptr);
  EXPECT_EQ(module.loadResource(77u, KVW("METADATA"), true).get(), nullptr);
  EXPECT_EQ(String::loadFromResource(0xFFFE, module), KVW("Error loading string resource!"));
}

TEST(LibraryModule, ADomainByDefaultIsTheLibrary) {
  Module const& module = *Module::begin();
  HINSTANCE const holder = module.findResource(KVW("RESOURCE.H"), KVW("METADATA"), false, nullptr);
  HINSTANCE const before = platform::framework().resourceInstance();
  {
    ScopedResourceDomain const domain;
    EXPECT_EQ(platform::framework().resourceInstance(), holder);
  }
  EXPECT_EQ(platform::framework().resourceInstance(), before);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
