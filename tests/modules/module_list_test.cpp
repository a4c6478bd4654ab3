// SPDX-License-Identifier: MIT
#include "kvbase/modules/module.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <memory>
#include <vector>

#include "kvbase/modules/client_module.h"

namespace KV_1_1 {
namespace testing {
namespace {

using Modules = std::vector<Module const*>;
using Position = Module::const_iterator;

Modules forward() {
  Modules modules;
  for (Position i = Module::begin(); i != Module::end(); ++i) modules.push_back(&*i);
  return modules;
}

Modules backward() {
  Modules modules;
  for (auto i = Module::rbegin(); i != Module::rend(); ++i) modules.push_back(&*i);
  return modules;
}

bool startAndAreInOrder(void const* start, std::initializer_list<void const*> fields) {
  return start == *fields.begin() && std::is_sorted(fields.begin(), fields.end());
}

// Private members may be named in an explicit instantiation, which makes these functions known.
unsigned long long countOfModules();
bool fieldsAreInOrder(Module const& module);

template <unsigned long long* Count, auto... Fields>
struct ModuleMembers {
  friend unsigned long long countOfModules() { return *Count; }
  friend bool fieldsAreInOrder(Module const& module) { return startAndAreInOrder(&module, {&(module.*Fields)...}); }
};
template struct ModuleMembers<&Module::count, &Module::next_, &Module::previous_, &Module::initialised_,
                              &Module::codeModule_, &Module::resourceModule_, &Module::moduleName_,
                              &Module::resourceSymbols_>;

Modules joinedModules(Modules left, Modules const& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

TEST(ModuleList, TheLibrarysModuleIsBuiltOnceAndComesFirst) {
  EXPECT_EQ(&getLibraryModule(), &getLibraryModule());
  ASSERT_NE(Module::begin(), Module::end());
  EXPECT_EQ(&*Module::begin(), &getLibraryModule());
}

TEST(ModuleList, AModuleJoinsAtTheEndAndLeavesWhenItGoes) {
  Modules const before = forward();
  {
    ModuleOwner one;
    EXPECT_EQ(forward(), joinedModules(before, {&one.module()}));
    ModuleOwner two;
    EXPECT_EQ(forward(), joinedModules(before, {&one.module(), &two.module()}));
  }
  EXPECT_EQ(forward(), before);
}

// Other libraries have Modules too, so this is part of the interface.
TEST(ModuleList, AModuleHasItsSevenFieldsInOrder) {
  ModuleOwner owner;
  EXPECT_TRUE(fieldsAreInOrder(owner.module()));
  EXPECT_EQ(sizeof(Module), 7 * sizeof(void*));
  EXPECT_EQ(sizeof(Module::const_iterator), sizeof(void*));
}

TEST(ModuleList, TheCountIsThatOfTheModulesInTheList) {
  unsigned long long const before = countOfModules();
  EXPECT_EQ(before, forward().size());
  {
    ModuleOwner one;
    ModuleOwner two;
    EXPECT_EQ(countOfModules(), before + 2);
  }
  EXPECT_EQ(countOfModules(), before);
}

TEST(ModuleList, AModuleGoesFromAnyPlaceOfTheList) {
  Modules const before = forward();
  for (std::size_t gone = 0; gone < 3; ++gone) {
    SCOPED_TRACE(gone);
    std::vector<std::unique_ptr<ModuleOwner>> owners;
    for (int i = 0; i < 3; ++i) owners.push_back(std::make_unique<ModuleOwner>());
    Modules expected = before;
    for (std::size_t i = 0; i < 3; ++i) {
      if (i != gone) expected.push_back(&owners[i]->module());
    }
    owners[gone].reset();
    EXPECT_EQ(forward(), expected);
    EXPECT_EQ(backward(), Modules(expected.rbegin(), expected.rend()));
    // The list grows as before behind the gap.
    ModuleOwner next;
    EXPECT_EQ(forward(), joinedModules(expected, {&next.module()}));
  }
  EXPECT_EQ(forward(), before);
}

TEST(ModuleList, ReadsBackwards) {
  ModuleOwner one;
  ModuleOwner two;
  Modules const all = forward();
  EXPECT_EQ(backward(), Modules(all.rbegin(), all.rend()));
}

TEST(ModuleList, IsARange) {
  ModuleOwner one;
  Modules modules;
  for (Module const& module : Module::all()) modules.push_back(&module);
  EXPECT_EQ(modules, forward());
}

TEST(ModuleList, IsCircularThroughTheEnd) {
  ModuleOwner owner;
  Module const* const last = &owner.module();
  Position position = Module::end();
  EXPECT_EQ(++position, Module::begin());
  position = Module::end();
  EXPECT_EQ(&*--position, last);
  EXPECT_EQ(++position, Module::end());
  position = Module::begin();
  EXPECT_EQ(--position, Module::end());
}

TEST(ModuleList, WithOneModuleFirstAndLastAreTheSame) {
  ASSERT_EQ(forward().size(), 1u);
  Position last = Module::end();
  --last;
  EXPECT_EQ(Module::begin(), last);
  EXPECT_EQ(++last, Module::end());
}

// COMPAT: the postfix forms are the prefix forms: they move and return the iterator itself.
TEST(ModuleList, PostfixFormsAreThePrefixForms) {
  ModuleOwner owner;
  Position position = Module::begin();
  Position& up = position++;
  EXPECT_EQ(&up, &position);
  EXPECT_NE(position, Module::begin());
  Position& down = position--;
  EXPECT_EQ(&down, &position);
  EXPECT_EQ(position, Module::begin());
  EXPECT_EQ(&++position, &position);
  EXPECT_EQ(&--position, &position);
}

TEST(ModuleList, PositionsCopyAndCompareByTheirModule) {
  ModuleOwner owner;
  Position position = Module::begin();
  Position const copy(position);
  EXPECT_TRUE(copy == position && !(copy != position));
  ++position;
  EXPECT_TRUE(copy != position && !(copy == position));
  position = copy;
  EXPECT_EQ(position, Module::begin());
  EXPECT_EQ(position.operator->(), &*position);
}

TEST(ModuleList, AModuleThatWasNotStartedHasTheEmptyName) {
  ModuleOwner owner;
  EXPECT_EQ(&owner.module().getModuleName(), &String::EMPTY);
}

}  // namespace
}  // namespace testing
}  // namespace KV_1_1
