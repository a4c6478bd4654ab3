// SPDX-License-Identifier: MIT
#pragma once

#include "kvbase/diagnostics/stack_walker.h"
#include "kvbase/export.h"
#include "kvbase/text_unit.h"

// A walker that prints nothing and only counts frames. OutputDebugParenthesesScope uses the one global object of it.
// Failure, memory and copies: as StackWalker.
//
// Thread rule: as StackWalker. The static members are shared by all threads and not guarded.
class KVBASE_API VgStackWalker : public StackWalker {
 public:
  // For this process, with no options: no search path is composed, no file versions are read.
  VgStackWalker();
  // For another process, of which `process` is a handle; no options either.
  VgStackWalker(KV_1_1::ulong32 processId, void* process);
  // COMPAT: shallow, as those of StackWalker, so only one of the two objects may be destroyed. A moved-from object
  // stays as it is.
  VgStackWalker(VgStackWalker const& other);
  VgStackWalker& operator=(VgStackWalker const& other);
  ~VgStackWalker() override;

  // Counts. COMPAT: EntryLast counts, too, so after a walk to the end of a stack the depth is the number of frames plus 1.
  void OnCallstackEntry(CallstackEntryType type, CallstackEntry& entry) override;
  // Nothing.
  void OnOutput(char const* text) override;

  // Built when the library starts; loads nothing before its first walk.
  static VgStackWalker globalStackWalker;
  // The depth of the innermost open OutputDebugParenthesesScope; 0 without one.
  static int initialCallStackDepth;
  // For users of the library, which neither reads nor writes it.
  static int callStackDepthOfPreviousOutput;

  // The calls of OnCallstackEntry since this was last set to 0.
  int callStackDepth = 0;
};
