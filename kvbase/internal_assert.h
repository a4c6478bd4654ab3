// SPDX-License-Identifier: MIT
//
// Preconditions of the library's own code. A breach stops the process in checked builds (KVBASE_CHECKED: the sanitizer
// presets); every other build contains none of it. Preconditions of the public interface are not asserted: their breach
// is a null access, as the headers say.
#pragma once

#if defined(KVBASE_CHECKED)
#include <cstdio>
#include <cstdlib>

// A macro all the way down: an inline function could be shared by units compiled for different processors.
#define KVBASE_ASSERT(condition)                                                                                    \
  ((condition) ? static_cast<void>(0)                                                                               \
               : (static_cast<void>(std::fprintf(stderr, "%s:%d: violated: %s\n", __FILE__, __LINE__, #condition)), \
                  std::abort()))
#else
#define KVBASE_ASSERT(condition) static_cast<void>(sizeof((condition) ? 1 : 0))
#endif
