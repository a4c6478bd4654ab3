// SPDX-License-Identifier: MIT
//
// What a program pays for each scope of debug output: a walk along its call stack.
#include "benchmarks/debug_help_calls.h"
#include "benchmarks/support.h"
#include "kvbase/diagnostics/output_debug_parentheses_scope.h"
#include "kvbase/diagnostics/vg_stack_walker.h"

namespace KV_1_1 {
namespace bench {

void addCallStack() {
  static DebugHelp const help;
  // A walk that only counts frames still makes all calls that a walk makes.
  Row("call stack: a scope of debug output")
      .add("KVBase",
           [] {
             return deeply<kFrames>([] {
               OutputDebugParenthesesScope const scope;
               return VgStackWalker::initialCallStackDepth > kFrames ? 1 : 0;
             });
           })
      .add("its calls", [] { return deeply<kFrames>([] { return help.depth() > kFrames ? 1 : 0; }); });
}

}  // namespace bench
}  // namespace KV_1_1
