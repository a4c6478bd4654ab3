// SPDX-License-Identifier: MIT
//
// The Windows types that stand in public interfaces, at global scope on both systems. This is the only header through
// which a public header reaches <windows.h>.
#pragma once

#if defined(_WIN32)

#if !defined(WIN32_LEAN_AND_MEAN)
#define WIN32_LEAN_AND_MEAN
#endif
#if !defined(NOMINMAX)
#define NOMINMAX
#endif
#include <windows.h>

#else

#include <cstdint>

// Handle of a loaded module.
struct HINSTANCE__;
typedef HINSTANCE__* HINSTANCE;

// An unsigned 64-bit value with a low and a high half.
union ULARGE_INTEGER {
  struct {
    std::uint32_t LowPart;
    std::uint32_t HighPart;
  } u;
  std::uint64_t QuadPart;
};

#endif
