// SPDX-License-Identifier: MIT
#pragma once

#include "kvbase/export.h"
#include "kvbase/strings/kv_string.h"

namespace KV_1_1 {

class Module;

// An entry of a module's string table, loaded when it is first read.
//
//   StringResource const message(IDS_NO_SCAN, module);
//   show(message);
//
// The text is loaded once for an object: a later change of the language does not change it, and the text of a failed load
// (String::loadFromResource) stays too.
// Lifetime: the module must outlive the first read.
// Thread rule: one thread at a time; even a const object changes when it is first read.
class KVBASE_API StringResource {
 public:
  // Reads NIL.
  StringResource();
  // Loads nothing yet.
  StringResource(unsigned int id, Module const& module);
  // Copies share a text that has been loaded.
  StringResource(StringResource const&) = default;
  // Takes over whether the text has been loaded, too.
  StringResource& operator=(StringResource const&) = default;

  // The text, never NIL if there is a module. Valid until this object changes.
  // Failure: std::bad_alloc; the next read tries again.
  operator String const&() const;

 private:
  unsigned int id_;
  Module const* module_;
  mutable String value_;
};

}  // namespace KV_1_1
