// SPDX-License-Identifier: MIT
#pragma once

#include "kvbase/export.h"

// Marks where a bracketed block of debug output starts, by the depth of the call stack. While a scope is open,
// VgStackWalker::initialCallStackDepth is the number of frames from the constructor's walk to the end of the stack; then
// it is again what it was before. Scopes nest. Nothing is written anywhere: code that prints reads the depth.
//
//   OutputDebugParenthesesScope const scope;
//   printIndented(VgStackWalker::initialCallStackDepth);
//
// Failure: COMPAT: the depth is one less than the number of frames if a walk ends with an error, and -1 if it cannot
// start. Thread rule: the depth is shared by all threads and not guarded, so only one thread at a time may open and close
// scopes.
class KVBASE_API OutputDebugParenthesesScope {
 public:
  // Walks the stack of the calling thread by VgStackWalker::globalStackWalker; the first scope of the process loads the
  // debug-help library.
  OutputDebugParenthesesScope();
  // COMPAT: a copy restores the same depth as its source, and copying opens nothing.
  OutputDebugParenthesesScope(OutputDebugParenthesesScope const& other) = default;
  OutputDebugParenthesesScope& operator=(OutputDebugParenthesesScope const& other);
  ~OutputDebugParenthesesScope();

 private:
  int savedInitialDepth_;
};
