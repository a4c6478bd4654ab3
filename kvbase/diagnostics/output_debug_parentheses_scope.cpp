// SPDX-License-Identifier: MIT
#include "kvbase/diagnostics/output_debug_parentheses_scope.h"

#include "kvbase/diagnostics/vg_stack_walker.h"
#include "kvbase/platform/debug_api.h"

namespace platform = KV_1_1::platform;

OutputDebugParenthesesScope::OutputDebugParenthesesScope() : savedInitialDepth_(VgStackWalker::initialCallStackDepth) {
  VgStackWalker& walker = VgStackWalker::globalStackWalker;
  walker.callStackDepth = 0;
  walker.ShowCallstack(platform::debug().currentThread(), nullptr, nullptr, nullptr);
  VgStackWalker::initialCallStackDepth = walker.callStackDepth - 1;
}

OutputDebugParenthesesScope& OutputDebugParenthesesScope::operator=(OutputDebugParenthesesScope const& other) = default;

OutputDebugParenthesesScope::~OutputDebugParenthesesScope() {
  VgStackWalker::initialCallStackDepth = savedInitialDepth_;
}
