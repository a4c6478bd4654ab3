// SPDX-License-Identifier: MIT
#include "kvbase/modules/module.h"

#include <iterator>
#include <type_traits>

#include "kvbase/modules/client_module.h"
#include "kvbase/modules/symbol_table.h"

namespace KV_1_1 {

static_assert(!std::is_destructible<Module>::value, "only its owner destroys a Module");
KVBASE_DEPRECATED_NAMES_BEGIN
static_assert(std::is_base_of<std::iterator<std::bidirectional_iterator_tag, Module const, unsigned long long,
                                            Module const*, Module const&>,
                              Module::const_iterator>::value,
              "the types of the iterator are part of the interface");
KVBASE_DEPRECATED_NAMES_END

Module* Module::head = nullptr;
Module* Module::tail = nullptr;
unsigned long long Module::count = 0;

Module::Module() : previous_(tail) {
  (previous_ != nullptr ? previous_->next_ : head) = this;
  tail = this;
  ++count;
}

Module::~Module() {
  delete moduleName_;
  moduleName_ = nullptr;
  --count;
  (next_ != nullptr ? next_->previous_ : tail) = previous_;
  (previous_ != nullptr ? previous_->next_ : head) = next_;
  // The library's own module ends itself here: its storage outlives it, and its fields are still there.
  if (initialised_) getLibraryModule().internalTerm();
}

Module::const_iterator Module::begin() {
  return const_iterator(head);
}

Module::const_iterator Module::end() {
  return const_iterator(nullptr);
}

std::reverse_iterator<Module::const_iterator> Module::rbegin() {
  return std::reverse_iterator<const_iterator>(end());
}

std::reverse_iterator<Module::const_iterator> Module::rend() {
  return std::reverse_iterator<const_iterator>(begin());
}

String const& Module::getModuleName() const {
  return moduleName_ != nullptr ? *moduleName_ : String::EMPTY;
}

SymbolTable const& Module::getResourceSymbols() const {
  return resourceSymbols_ != nullptr ? *resourceSymbols_ : SymbolTable::EMPTY;
}

Module::const_iterator& Module::const_iterator::operator++() {
  module_ = module_ != nullptr ? module_->next_ : head;
  return *this;
}

Module::const_iterator& Module::const_iterator::operator--() {
  module_ = module_ != nullptr ? module_->previous_ : tail;
  return *this;
}

}  // namespace KV_1_1
