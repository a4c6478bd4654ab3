// SPDX-License-Identifier: MIT
//
// What must not slip through String's interface. Each case gives an error that matches its expectation.
#include <string>

#include "kvbase/kvbase.h"

using KV_1_1::String;

String makeText();

void use(String text) {
  text.printf(KVW("%ls %d"), text, 1);

#ifdef CASE_PRINTF_OF_A_STANDARD_STRING
  // expect: printf takes numbers, Strings and texts
  text.printf(KVW("%ls"), std::string("text"));
#endif

#ifdef CASE_NARROW_TEXT_WITHOUT_CODE_PAGE
  // expect: conversion from|no matching function
  String const narrow = String("text");
#endif

#ifdef CASE_CHANGE_OF_A_CONSTANT
  // expect: discards qualifiers|passing .const
  String::EMPTY.write(KVW("text"), -1);
#endif
}
