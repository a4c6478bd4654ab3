// SPDX-License-Identifier: MIT
//
// What a library of the family needs to take part: its own Module, and the records of its classes, built behind it.
#pragma once

#include "kvbase/core/class_record.h"
#include "kvbase/modules/module.h"

namespace KV_1_1 {

// Owns the Module of one library; the Module stands in the list as long as its owner lives. A library has one, as a
// static object that comes up before its class records and so goes down after them.
class ModuleOwner {
 public:
  ModuleOwner() = default;
  ModuleOwner(ModuleOwner const&) = delete;
  ModuleOwner& operator=(ModuleOwner const&) = delete;

  Module& module() { return module_; }

 private:
  Module module_;
};

}  // namespace KV_1_1
