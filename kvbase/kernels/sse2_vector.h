// SPDX-License-Identifier: MIT
#pragma once

#include <emmintrin.h>

#include "kvbase/export.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace strings {
namespace {

// A vector of eight units for vector_kernels.h.
struct Sse2Vector {
  using Register = __m128i;
  using Half = void;
  static constexpr int kUnits = 8;
  // Converting runs of characters other than ASCII takes shuffles, which SSE2 does not have.
  static constexpr bool kConvertsRuns = false;

  static Register load(wchar const* units) { return _mm_loadu_si128(reinterpret_cast<__m128i const*>(units)); }
  KVBASE_READS_ALIGNED_BLOCKS static Register loadAligned(char const* block) {
    return _mm_load_si128(reinterpret_cast<__m128i const*>(block));
  }
  // The first half of the vector from the front of n units, the second half from their end.
  static Register loadEnds(wchar const* units, int n) {
    return _mm_unpacklo_epi64(_mm_loadl_epi64(reinterpret_cast<__m128i const*>(units)),
                              _mm_loadl_epi64(reinterpret_cast<__m128i const*>(units + n - kUnits / 2)));
  }
  static void store(wchar* units, Register value) { _mm_storeu_si128(reinterpret_cast<__m128i*>(units), value); }
  // Whether the next kUnits bytes are all ASCII.
  static bool isAscii(char const* bytes) {
    return (_mm_movemask_epi8(_mm_loadl_epi64(reinterpret_cast<__m128i const*>(bytes))) & 0xFF) == 0;
  }
  static Register loadNarrow(char const* bytes) {
    return _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<__m128i const*>(bytes)), zero());
  }
  static void storeNarrow(char* bytes, Register units) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(bytes), _mm_packus_epi16(units, units));
  }

  static Register zero() { return _mm_setzero_si128(); }
  static Register of(int unit) { return _mm_set1_epi16(static_cast<short>(unit)); }
  static Register equal(Register a, Register b) { return _mm_cmpeq_epi16(a, b); }
  // Compares signed numbers.
  static Register greater(Register a, Register b) { return _mm_cmpgt_epi16(a, b); }
  static Register bitAnd(Register a, Register b) { return _mm_and_si128(a, b); }
  static Register bitOr(Register a, Register b) { return _mm_or_si128(a, b); }
  static Register bitXor(Register a, Register b) { return _mm_xor_si128(a, b); }
  // The minimum of unsigned numbers.
  static Register min(Register a, Register b) { return _mm_sub_epi16(a, _mm_subs_epu16(a, b)); }
  static Register bitNot(Register a) { return _mm_xor_si128(a, _mm_set1_epi16(-1)); }
  static Register select(Register mask, Register yes, Register no) {
    return _mm_or_si128(_mm_and_si128(mask, yes), _mm_andnot_si128(mask, no));
  }
  static Register add(Register a, Register b) { return _mm_add_epi16(a, b); }
  static Register sub(Register a, Register b) { return _mm_sub_epi16(a, b); }
  // The sum of the units as signed numbers.
  static int sumOfUnits(Register units) {
    __m128i sums = _mm_madd_epi16(units, _mm_set1_epi16(1));
    sums = _mm_add_epi32(sums, _mm_shuffle_epi32(sums, 0x4E));
    sums = _mm_add_epi32(sums, _mm_shuffle_epi32(sums, 0xB1));
    return _mm_cvtsi128_si32(sums);
  }
  static unsigned int mask(Register a) { return static_cast<unsigned int>(_mm_movemask_epi8(a)); }
  // One bit per unit, those of `a` lowest.
  static unsigned int maskOfTwo(Register a, Register b) {
    return static_cast<unsigned int>(_mm_movemask_epi8(_mm_packs_epi16(a, b)));
  }

  // A register of twice as many bytes.
  static Register loadBytes(char const* bytes) { return _mm_loadu_si128(reinterpret_cast<__m128i const*>(bytes)); }
  static void storeBytes(char* bytes, Register value) { _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), value); }
  static Register bytesOf(int byte) { return _mm_set1_epi8(static_cast<char>(byte)); }
  static Register addBytes(Register a, Register b) { return _mm_add_epi8(a, b); }
  static Register equalBytes(Register a, Register b) { return _mm_cmpeq_epi8(a, b); }
  // Compares signed numbers.
  static Register greaterBytes(Register a, Register b) { return _mm_cmpgt_epi8(a, b); }
  // Units from 0x80 on give bytes that are negative or 0 as signed numbers; those beyond 0xFF not their own.
  static Register narrowed(Register front, Register back) { return _mm_packus_epi16(front, back); }
  static void storeWidened(wchar* units, char const* bytes) {
    Register const block = loadBytes(bytes);
    store(units, _mm_unpacklo_epi8(block, zero()));
    store(units + kUnits, _mm_unpackhi_epi8(block, zero()));
  }
};

}  // namespace
}  // namespace strings
}  // namespace KV_1_1
