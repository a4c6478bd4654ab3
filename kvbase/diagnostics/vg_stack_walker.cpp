// SPDX-License-Identifier: MIT
#include "kvbase/diagnostics/vg_stack_walker.h"

using KV_1_1::ulong32;

int VgStackWalker::initialCallStackDepth = 0;
int VgStackWalker::callStackDepthOfPreviousOutput = 0;

VgStackWalker::VgStackWalker() : StackWalker(0) {}

VgStackWalker::VgStackWalker(ulong32 walkedProcessId, void* walkedProcess)
    : StackWalker(0, nullptr, walkedProcessId, walkedProcess) {}

VgStackWalker::VgStackWalker(VgStackWalker const& other) = default;

VgStackWalker& VgStackWalker::operator=(VgStackWalker const& other) = default;

VgStackWalker::~VgStackWalker() = default;

void VgStackWalker::OnCallstackEntry(CallstackEntryType, CallstackEntry&) {
  ++callStackDepth;
}

void VgStackWalker::OnOutput(char const*) {}
