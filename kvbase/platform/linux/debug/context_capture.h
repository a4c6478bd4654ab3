// SPDX-License-Identifier: MIT
#pragma once

#include "kvbase/platform/types.h"

// Stores the registers that the caller has after the call: its program counter is the return address. Written in
// assembler, since any other code would change registers first.
extern "C" void kvbaseCaptureContext(_CONTEXT* context);
