// SPDX-License-Identifier: MIT
//
// The inner loops of the string code, each in several versions with the same result: scalar (the definition, with which
// tests compare the others), SSE2 (every x86-64 processor), AVX2 and AVX-512 (chosen once when the library starts).
//
// Lengths and positions count units, or bytes where it says so. A function reads nothing outside the range it is given,
// except `length`: it reads whole aligned vectors, which never cross into another page.
#pragma once

#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace strings {

// The bytes from low to high, which is not below low.
struct ByteRange {
  unsigned char low;
  unsigned char high;
};

struct TextKernels {
  // Units before the first NUL.
  int (*length)(wchar const* text);
  // First index below n at which the texts differ or both have a NUL; n if there is none.
  int (*mismatch)(wchar const* a, wchar const* b, int n);
  // The same with A to Z taken as a to z.
  int (*mismatchIgnoringCase)(wchar const* a, wchar const* b, int n);
  // First index below n that holds the unit or a NUL; n if there is none.
  int (*findUnit)(wchar const* text, wchar unit, int n);
  // Last index below n that holds the unit; -1 if there is none. NULs are units like all others.
  int (*findLastUnit)(wchar const* text, wchar unit, int n);
  // First index of the m units of the needle, all of them before the first NUL and below n; -1 if there is none.
  // REQUIRES: m is at least 1 and the needle holds no NUL.
  int (*findText)(wchar const* text, int n, wchar const* needle, int m);
  // First index below n that holds a unit from low to high, or one beyond ASCII; n if there is none. NULs are units like
  // all others.
  // REQUIRES: low is not above high, and both are ASCII.
  int (*findRange)(wchar const* text, int n, wchar low, wchar high);
  // Overwrites each unit `from` before the first NUL and below n with `to`; returns how many.
  // REQUIRES: `from` is not NUL.
  int (*replaceUnit)(wchar* text, int n, wchar from, wchar to);

  // Bytes that n units take in UTF-8 (at most 3n); a lone surrogate counts as U+FFFD.
  long long (*utf8Size)(wchar const* units, int n);
  // Writes n units as UTF-8 and returns the bytes written; there is room for utf8Size of them.
  long long (*toUtf8)(wchar const* units, int n, char* bytes);
  // Units that n bytes of UTF-8 decode to (at most n). Each longest piece that begins a valid sequence but does not
  // complete it, and each byte that cannot begin one, counts as one U+FFFD.
  int (*utf16Size)(char const* bytes, int n);
  // Decodes n bytes of UTF-8 and returns the units written. The room is at least utf16Size of them; all of it may be
  // written to, and room for n units makes this faster.
  int (*fromUtf8)(char const* bytes, int n, wchar* units, int room);

  // First index below n that holds a unit beyond U+00FF; n if there is none.
  int (*findBeyondLatin1)(wchar const* units, int n);
  // Copies n bytes as units of the same number, up to the first byte of the range; returns how many. There is room for
  // n.
  int (*widen)(char const* bytes, int n, ByteRange except, wchar* units);
  // Copies n units as bytes of the same number, up to the first one beyond U+00FF or of the range; returns how many.
  // There is room for n.
  int (*narrow)(wchar const* units, int n, ByteRange except, char* bytes);
};

extern TextKernels const kScalarKernels;
extern TextKernels const kSse2Kernels;
extern TextKernels const kAvx2Kernels;
// Those of AVX2, but for UTF-16 to UTF-8 and back.
// REQUIRES: platform::hasAvx512().
TextKernels const& avx512Kernels();

// The kernels in use; SSE2 until the library has started.
extern TextKernels const* activeKernels;

inline TextKernels const& kernels() {
  return *activeKernels;
}

// Sets activeKernels to the best that this processor has.
void chooseKernels();

}  // namespace strings
}  // namespace KV_1_1
