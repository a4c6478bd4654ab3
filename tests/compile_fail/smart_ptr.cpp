// SPDX-License-Identifier: MIT
//
// Conversions that a SmartPtr must refuse.
#include "kvbase/kvbase.h"

using KV_1_1::BaseNode;
using KV_1_1::Directory;
using KV_1_1::SmartPtr;

void use(SmartPtr<Directory> directory) {
  SmartPtr<Directory const> const same = directory;
  SmartPtr<BaseNode const> const base = same;

#ifdef CASE_FROM_CONST
  // expect: to non-scalar type|no viable conversion
  SmartPtr<Directory> const writable = same;
#endif

#ifdef CASE_FROM_BASE
  // expect: to non-scalar type|no viable conversion
  SmartPtr<Directory const> const derived = base;
#endif

#ifdef CASE_TO_A_RAW_POINTER
  // expect: cannot convert|no viable conversion
  Directory* const raw = directory;
#endif

#ifdef CASE_TO_AN_INTEGER
  // expect: cannot convert|no viable conversion
  int const number = directory;
#endif
}
