// SPDX-License-Identifier: MIT
//
// The Windows types that public interfaces use, at global scope on both systems. This is the only header through which
// a public header includes <windows.h>.
#pragma once

#if defined(_WIN32)

#if !defined(WIN32_LEAN_AND_MEAN)
#define WIN32_LEAN_AND_MEAN
#endif
#if !defined(NOMINMAX)
#define NOMINMAX
#endif
#include <windows.h>

#include <sys/stat.h>

#else

#include <sys/stat.h>

#include <cstdint>

// Handle of a loaded module.
struct HINSTANCE__;
typedef HINSTANCE__* HINSTANCE;

// Handle of a resource in a module.
struct HRSRC__;
typedef HRSRC__* HRSRC;

// The registers of a thread of an x64 processor, laid out as on Windows. ContextFlags says which parts are filled; the
// members of debug registers and vectors are not used off Windows.
struct alignas(16) _CONTEXT {
  std::uint64_t P1Home, P2Home, P3Home, P4Home, P5Home, P6Home;
  std::uint32_t ContextFlags, MxCsr;
  std::uint16_t SegCs, SegDs, SegEs, SegFs, SegGs, SegSs;
  std::uint32_t EFlags;
  std::uint64_t Dr0, Dr1, Dr2, Dr3, Dr6, Dr7;
  std::uint64_t Rax, Rcx, Rdx, Rbx, Rsp, Rbp, Rsi, Rdi, R8, R9, R10, R11, R12, R13, R14, R15;
  std::uint64_t Rip;
  unsigned char FltSave[512];
  unsigned char VectorRegister[416];
  std::uint64_t VectorControl, DebugControl, LastBranchToRip, LastBranchFromRip, LastExceptionToRip,
      LastExceptionFromRip;
};
static_assert(sizeof(_CONTEXT) == 1232, "as on Windows");

// A constant that stands for the calling thread.
inline void* GetCurrentThread() {
  return reinterpret_cast<void*>(static_cast<std::intptr_t>(-2));
}

// An unsigned 64-bit value with a low and a high half.
union ULARGE_INTEGER {
  struct {
    std::uint32_t LowPart;
    std::uint32_t HighPart;
  } u;
  std::uint64_t QuadPart;
};

// A time in units of 100 ns since the beginning of 1601, UTC.
struct FILETIME {
  std::uint32_t dwLowDateTime;
  std::uint32_t dwHighDateTime;
};

// The status record of the C runtime of Windows. `st_mode` has the bits of <sys/stat.h>, the size has 32 bits, and
// inode and owners, which do not fit, are 0. <sys/stat.h> defines st_atime, st_mtime and st_ctime as macros for the
// seconds of the times below.
struct _stat64i32 {
  struct Seconds {
    std::int64_t tv_sec;
  };

  std::uint32_t st_dev;
  std::uint16_t st_ino;
  std::uint16_t st_mode;
  std::int16_t st_nlink;
  std::int16_t st_uid;
  std::int16_t st_gid;
  std::uint32_t st_rdev;
  std::int32_t st_size;
  Seconds st_atim;
  Seconds st_mtim;
  Seconds st_ctim;
};

#endif
