// SPDX-License-Identifier: MIT
//
// The only source compiled for AVX2; kernels().chooseKernels decides at start whether what it holds is ever called.
#include <immintrin.h>

#include "kvbase/strings/internal/sse2_vector.h"
#include "kvbase/strings/internal/vector_kernels.h"

namespace KV_1_1 {
namespace strings {
namespace {

// Sixteen units: what vector_kernels.h asks of a vector.
struct Avx2Vector {
  using Register = __m256i;
  using Half = Sse2Vector;
  static constexpr int kUnits = 16;

  static Register load(wchar const* units) { return _mm256_loadu_si256(reinterpret_cast<__m256i const*>(units)); }
  KVBASE_READS_ALIGNED_BLOCKS static Register loadAligned(char const* block) {
    return _mm256_load_si256(reinterpret_cast<__m256i const*>(block));
  }
  static Register loadEnds(wchar const* units, int n) {
    return _mm256_inserti128_si256(_mm256_castsi128_si256(Half::load(units)), Half::load(units + n - Half::kUnits), 1);
  }
  static void store(wchar* units, Register value) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(units), value); }
  static bool isAscii(char const* bytes) {
    return _mm_movemask_epi8(_mm_loadu_si128(reinterpret_cast<__m128i const*>(bytes))) == 0;
  }
  static Register loadNarrow(char const* bytes) {
    return _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<__m128i const*>(bytes)));
  }
  static void storeNarrow(char* bytes, Register units) {
    __m128i const packed = _mm_packus_epi16(_mm256_castsi256_si128(units), _mm256_extracti128_si256(units, 1));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), packed);
  }

  static Register zero() { return _mm256_setzero_si256(); }
  static Register of(int unit) { return _mm256_set1_epi16(static_cast<short>(unit)); }
  static Register equal(Register a, Register b) { return _mm256_cmpeq_epi16(a, b); }
  static Register greater(Register a, Register b) { return _mm256_cmpgt_epi16(a, b); }
  static Register both(Register a, Register b) { return _mm256_and_si256(a, b); }
  static Register either(Register a, Register b) { return _mm256_or_si256(a, b); }
  static Register unlike(Register a, Register b) { return _mm256_xor_si256(a, b); }
  static Register lesser(Register a, Register b) { return _mm256_min_epu16(a, b); }
  static Register inverse(Register a) { return _mm256_xor_si256(a, _mm256_set1_epi16(-1)); }
  static Register choose(Register mask, Register yes, Register no) { return _mm256_blendv_epi8(no, yes, mask); }
  static Register sum(Register a, Register b) { return _mm256_add_epi16(a, b); }
  static Register difference(Register a, Register b) { return _mm256_sub_epi16(a, b); }
  static int sumOfUnits(Register units) {
    __m256i const sums = _mm256_madd_epi16(units, _mm256_set1_epi16(1));
    __m128i half = _mm_add_epi32(_mm256_castsi256_si128(sums), _mm256_extracti128_si256(sums, 1));
    half = _mm_add_epi32(half, _mm_shuffle_epi32(half, 0x4E));
    half = _mm_add_epi32(half, _mm_shuffle_epi32(half, 0xB1));
    return _mm_cvtsi128_si32(half);
  }
  static unsigned int mask(Register a) { return static_cast<unsigned int>(_mm256_movemask_epi8(a)); }
};

}  // namespace

TextKernels const kAvx2Kernels = kVectorKernels<Avx2Vector>;

}  // namespace strings
}  // namespace KV_1_1
