// SPDX-License-Identifier: MIT
//
// The public operations of String, one row each, which every sweep reads: receivers without text, exhausted memory, odd
// texts, several threads. A new operation of String needs a row here; cmake/checks/operations.py compares.
#pragma once

#include <string>
#include <variant>
#include <vector>

#include "kvbase/strings/kv_string.h"

namespace KV_1_1 {
namespace testing {

// What an operation gives. Nothing in it allocates, so that memory can be exhausted around it.
using Answer = std::variant<std::monostate, bool, int, wchar, char const*, String>;

struct StringOperation {
  enum Effect {
    kKeeps,    // the receiver keeps its payload, and several threads may do it with one String
    kChanges,  // the receiver gets another payload, or its own is written to
  };
  // In place of the number of allocations: memory exhausted on the way ends the process.
  static constexpr int kFatal = -1;

  // What it gives for NIL, for EMPTY, and for an empty text with a payload of its own: "answer", or "answer; state of the
  // receiver" where that is another one than before. A String in an answer is "same" if it has the payload that the empty
  // text had. A null pointer: the contract excludes NIL.
  struct Outcomes {
    constexpr Outcomes(char const* all) : nil(all), empty(all), own(all) {}
    constexpr Outcomes(char const* ofNil, char const* ofEmpty, char const* ofOwn)
        : nil(ofNil), empty(ofEmpty), own(ofOwn) {}
    char const* nil;
    char const* empty;
    char const* own;
  };

  // "Class::member(types)", and behind a colon what is special about this row.
  char const* name;
  Effect effect;
  Answer (*run)(String& receiver);
  Outcomes without;
  // How often it allocates while others share the text below, on which it has work to do.
  int allocations = 0;
  wchar const* text = KVW(" ab b 12");
};

std::vector<StringOperation> const& stringOperations();

// The answer as the rows spell it; `payload` is the text that counts as "same".
std::string shown(Answer const& answer, wchar const* payload);

}  // namespace testing
}  // namespace KV_1_1
