// SPDX-License-Identifier: MIT
//
// The only source compiled for AVX2. Nothing in it may be called before chooseKernels has found that the processor has it.
#include <immintrin.h>

#include "kvbase/kernels/sse2_vector.h"
#include "kvbase/kernels/vector_kernel_table.h"

namespace KV_1_1 {
namespace strings {
namespace {

// The shuffle that compresses eight units below U+0800 to UTF-8, by the mask of the ASCII units: of those only the first
// byte is kept.
struct CompressTable {
  unsigned char order[256][16];
  unsigned char size[256];

  constexpr CompressTable() : order(), size() {
    for (int ascii = 0; ascii < 256; ++ascii) {
      unsigned char n = 0;
      for (int unit = 0; unit < 8; ++unit) {
        order[ascii][n++] = static_cast<unsigned char>(2 * unit);
        if ((ascii >> unit & 1) == 0) order[ascii][n++] = static_cast<unsigned char>(2 * unit + 1);
      }
      size[ascii] = n;
    }
  }
};
constexpr CompressTable kCompress;

// The shuffle that moves the units of a mask to the front of eight.
struct KeepTable {
  unsigned char order[256][16];
  unsigned char size[256];

  constexpr KeepTable() : order(), size() {
    for (int kept = 0; kept < 256; ++kept) {
      unsigned char n = 0;
      for (int unit = 0; unit < 8; ++unit) {
        if ((kept >> unit & 1) == 0) continue;
        order[kept][n++] = static_cast<unsigned char>(2 * unit);
        order[kept][n++] = static_cast<unsigned char>(2 * unit + 1);
      }
      size[kept] = n / 2;
    }
  }
};
constexpr KeepTable kKeep;

inline __m128i ofFour(unsigned int value) {
  return _mm_set1_epi32(static_cast<int>(value));
}

inline __m128i load128(void const* from) {
  return _mm_loadu_si128(static_cast<__m128i const*>(from));
}

inline void store128(void* to, __m128i value) {
  _mm_storeu_si128(static_cast<__m128i*>(to), value);
}

// A vector of sixteen units for vector_kernels.h.
struct Avx2Vector {
  using Register = __m256i;
  using Half = Sse2Vector;
  static constexpr int kUnits = 16;

  // Some compilers repeat an ordinary load in each instruction that uses the value.
  static Register load(wchar const* units) { return _mm256_lddqu_si256(reinterpret_cast<__m256i const*>(units)); }
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

  static constexpr bool kConvertsRuns = true;
  // Eight units as UTF-8, if they are all below U+0800, or all of three bytes, or all pairs; returns how many bytes that
  // makes, 0 if they are mixed. Up to eight bytes more are written.
  static int toUtf8(wchar const* units, char* bytes) {
    if (int const size = toShortUtf8(units, bytes)) return size;
    return toLongUtf8(units, bytes) ? 24 : toFourBytes(units, bytes) ? 16 : 0;
  }
  // Eight units below U+0800 as UTF-8; returns how many bytes that makes, 0 if there is another unit among them.
  // Sixteen bytes are written.
  static int toShortUtf8(wchar const* units, char* bytes) {
    __m128i const block = load128(units);
    if (_mm_testz_si128(block, _mm_set1_epi16(static_cast<short>(0xF800))) == 0) return 0;
    __m128i const lead = _mm_or_si128(_mm_srli_epi16(block, 6), _mm_set1_epi16(0xC0));
    __m128i const tail =
        _mm_slli_epi16(_mm_or_si128(_mm_and_si128(block, _mm_set1_epi16(0x3F)), _mm_set1_epi16(0x80)), 8);
    __m128i const ascii = _mm_cmpgt_epi16(_mm_set1_epi16(0x80), block);
    __m128i const pairs = _mm_blendv_epi8(_mm_or_si128(lead, tail), block, ascii);
    int const mask = _mm_movemask_epi8(_mm_packs_epi16(ascii, _mm_setzero_si128()));
    store128(bytes, _mm_shuffle_epi8(pairs, load128(kCompress.order[mask])));
    return kCompress.size[mask];
  }
  // Eight units of three bytes each as UTF-8; false if there is another unit among them. 28 bytes are written, 24
  // count.
  static bool toLongUtf8(wchar const* units, char* bytes) {
    __m128i const block = load128(units);
    if (!haveThreeBytes(_mm_and_si128(block, _mm_set1_epi16(static_cast<short>(0xF800))))) return false;
    Register const wide = _mm256_cvtepu16_epi32(block);
    Register sequences = _mm256_or_si256(_mm256_srli_epi32(wide, 12), _mm256_set1_epi32(0x8080E0));
    sequences = _mm256_or_si256(sequences, _mm256_slli_epi32(_mm256_and_si256(wide, _mm256_set1_epi32(0xFC0)), 2));
    sequences = _mm256_or_si256(sequences, _mm256_slli_epi32(_mm256_and_si256(wide, _mm256_set1_epi32(0x3F)), 16));
    Register const order =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1));
    sequences = _mm256_shuffle_epi8(sequences, order);
    store128(bytes, _mm256_castsi256_si128(sequences));
    store128(bytes + 12, _mm256_extracti128_si256(sequences, 1));
    return true;
  }
  // Four pairs of surrogates as UTF-8, of four bytes each; false if that is not what the next eight units are.
  static bool toFourBytes(wchar const* units, char* bytes) {
    __m128i const pairs = load128(units);
    __m128i const marks = _mm_and_si128(pairs, ofFour(0xFC00FC00));
    if (_mm_movemask_epi8(_mm_cmpeq_epi32(marks, ofFour(0xDC00D800))) != 0xFFFF) return false;
    __m128i const high = _mm_slli_epi32(_mm_and_si128(pairs, ofFour(0x3FF)), 10);
    __m128i const low = _mm_and_si128(_mm_srli_epi32(pairs, 16), ofFour(0x3FF));
    __m128i const codes = _mm_add_epi32(_mm_or_si128(high, low), ofFour(0x10000));
    __m128i sequences = _mm_or_si128(_mm_srli_epi32(codes, 18), ofFour(0x808080F0));
    sequences = _mm_or_si128(sequences, _mm_and_si128(_mm_srli_epi32(codes, 4), ofFour(0x3F00)));
    sequences = _mm_or_si128(sequences, _mm_and_si128(_mm_slli_epi32(codes, 10), ofFour(0x3F0000)));
    sequences = _mm_or_si128(sequences, _mm_and_si128(_mm_slli_epi32(codes, 24), ofFour(0x3F000000)));
    store128(bytes, sequences);
    return true;
  }
  // The characters of one and two bytes that begin in the next sixteen bytes, given to the sink; returns how many bytes
  // they take, 0 if anything else is among them. Seventeen bytes are read.
  template <class Sink>
  static int fromShortUtf8(char const* bytes, Sink& sink) {
    __m128i const block = load128(bytes);
    __m128i const behind = load128(bytes + 1);
    __m128i const isTail = _mm_cmpgt_epi8(_mm_set1_epi8(-64), block);
    __m128i const isLead =
        _mm_and_si128(_mm_cmpgt_epi8(block, _mm_set1_epi8(-63)), _mm_cmpgt_epi8(_mm_set1_epi8(-32), block));
    int const tails = _mm_movemask_epi8(isTail);
    int const leads = _mm_movemask_epi8(isLead);
    int const tailsBehind = _mm_movemask_epi8(_mm_cmpgt_epi8(_mm_set1_epi8(-64), behind));
    // Each lead byte has its tail byte behind it, and each tail byte its lead byte in front of it.
    bool const isShort =
        (tails | leads) == _mm_movemask_epi8(block) && (leads & ~tailsBehind) == 0 && (tails & ~(leads << 1)) == 0;
    if (!isShort) return 0;
    Register const units = _mm256_cvtepu8_epi16(block);
    Register const lead = _mm256_slli_epi16(_mm256_and_si256(units, _mm256_set1_epi16(0x1F)), 6);
    Register const tail = _mm256_and_si256(_mm256_cvtepu8_epi16(behind), _mm256_set1_epi16(0x3F));
    Register const both = select(_mm256_cvtepi8_epi16(isLead), bitOr(lead, tail), units);
    int const kept = ~tails;
    sink.units(_mm_shuffle_epi8(_mm256_castsi256_si128(both), load128(kKeep.order[kept & 0xFF])),
               kKeep.size[kept & 0xFF]);
    sink.units(_mm_shuffle_epi8(_mm256_extracti128_si256(both, 1), load128(kKeep.order[kept >> 8 & 0xFF])),
               kKeep.size[kept >> 8 & 0xFF]);
    return (leads & 0x8000) != 0 ? 17 : 16;
  }
  // Eight sequences of three bytes each; false if that is not what the next 24 bytes are. 28 bytes are read.
  static bool fromLongUtf8(char const* bytes, __m128i& units) {
    Register const order =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(2, 1, 0, -1, 5, 4, 3, -1, 8, 7, 6, -1, 11, 10, 9, -1));
    Register const both = _mm256_inserti128_si256(_mm256_castsi128_si256(load128(bytes)), load128(bytes + 12), 1);
    Register const sequences = _mm256_shuffle_epi8(both, order);
    Register const marks = _mm256_and_si256(sequences, _mm256_set1_epi32(0xF0C0C0));
    if (mask(_mm256_cmpeq_epi32(marks, _mm256_set1_epi32(0xE08080))) != ~0u) return false;
    Register codes = _mm256_and_si256(sequences, _mm256_set1_epi32(0x3F));
    codes = _mm256_or_si256(codes, _mm256_srli_epi32(_mm256_and_si256(sequences, _mm256_set1_epi32(0x3F00)), 2));
    codes = _mm256_or_si256(codes, _mm256_srli_epi32(_mm256_and_si256(sequences, _mm256_set1_epi32(0xF0000)), 4));
    units = _mm_packus_epi32(_mm256_castsi256_si128(codes), _mm256_extracti128_si256(codes, 1));
    return haveThreeBytes(_mm_and_si128(units, _mm_set1_epi16(static_cast<short>(0xF800))));
  }
  // Four sequences of four bytes; false if that is not what the next sixteen bytes are.
  static bool fromFourBytes(char const* bytes, __m128i& units) {
    __m128i const order = _mm_setr_epi8(3, 2, 1, 0, 7, 6, 5, 4, 11, 10, 9, 8, 15, 14, 13, 12);
    __m128i const sequences = _mm_shuffle_epi8(load128(bytes), order);
    __m128i const marks = _mm_and_si128(sequences, ofFour(0xF8C0C0C0));
    if (_mm_movemask_epi8(_mm_cmpeq_epi32(marks, ofFour(0xF0808080))) != 0xFFFF) return false;
    __m128i codes = _mm_and_si128(sequences, ofFour(0x3F));
    codes = _mm_or_si128(codes, _mm_and_si128(_mm_srli_epi32(sequences, 2), ofFour(0xFC0)));
    codes = _mm_or_si128(codes, _mm_and_si128(_mm_srli_epi32(sequences, 4), ofFour(0x3F000)));
    codes = _mm_or_si128(codes, _mm_and_si128(_mm_srli_epi32(sequences, 6), ofFour(0x1C0000)));
    // Twenty bits, or the sequence is over-long or beyond the last character.
    codes = _mm_sub_epi32(codes, ofFour(0x10000));
    if (_mm_testz_si128(codes, ofFour(0xFFF00000)) == 0) return false;
    __m128i const low = _mm_slli_epi32(_mm_and_si128(codes, ofFour(0x3FF)), 16);
    units = _mm_or_si128(_mm_or_si128(_mm_srli_epi32(codes, 10), low), ofFour(0xDC00D800));
    return true;
  }
  // Whether units whose upper five bits these are take three bytes: they are neither below U+0800 nor surrogates.
  static bool haveThreeBytes(__m128i upperBits) {
    __m128i const low = _mm_cmpeq_epi16(upperBits, _mm_setzero_si128());
    __m128i const surrogate = _mm_cmpeq_epi16(upperBits, _mm_set1_epi16(static_cast<short>(0xD800)));
    return _mm_movemask_epi8(_mm_or_si128(low, surrogate)) == 0;
  }

  static Register zero() { return _mm256_setzero_si256(); }
  static Register of(int unit) { return _mm256_set1_epi16(static_cast<short>(unit)); }
  static Register equal(Register a, Register b) { return _mm256_cmpeq_epi16(a, b); }
  static Register greater(Register a, Register b) { return _mm256_cmpgt_epi16(a, b); }
  static Register bitAnd(Register a, Register b) { return _mm256_and_si256(a, b); }
  static Register bitOr(Register a, Register b) { return _mm256_or_si256(a, b); }
  static Register bitXor(Register a, Register b) { return _mm256_xor_si256(a, b); }
  static Register min(Register a, Register b) { return _mm256_min_epu16(a, b); }
  static Register bitNot(Register a) { return _mm256_xor_si256(a, _mm256_set1_epi16(-1)); }
  static Register select(Register mask, Register yes, Register no) { return _mm256_blendv_epi8(no, yes, mask); }
  static Register add(Register a, Register b) { return _mm256_add_epi16(a, b); }
  static Register sub(Register a, Register b) { return _mm256_sub_epi16(a, b); }
  static int sumOfUnits(Register units) {
    __m256i const sums = _mm256_madd_epi16(units, _mm256_set1_epi16(1));
    __m128i half = _mm_add_epi32(_mm256_castsi256_si128(sums), _mm256_extracti128_si256(sums, 1));
    half = _mm_add_epi32(half, _mm_shuffle_epi32(half, 0x4E));
    half = _mm_add_epi32(half, _mm_shuffle_epi32(half, 0xB1));
    return _mm_cvtsi128_si32(half);
  }
  static unsigned int mask(Register a) { return static_cast<unsigned int>(_mm256_movemask_epi8(a)); }

  static Register loadBytes(char const* bytes) { return _mm256_loadu_si256(reinterpret_cast<__m256i const*>(bytes)); }
  static void storeBytes(char* bytes, Register value) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(bytes), value); }
  static Register bytesOf(int byte) { return _mm256_set1_epi8(static_cast<char>(byte)); }
  static Register addBytes(Register a, Register b) { return _mm256_add_epi8(a, b); }
  static Register greaterBytes(Register a, Register b) { return _mm256_cmpgt_epi8(a, b); }
  static Register narrowed(Register front, Register back) {
    return _mm256_permute4x64_epi64(_mm256_packus_epi16(front, back), 0xD8);
  }
  // The halves are loaded, although a caller has the whole: an instruction that widens what it loads takes less time than
  // one that has to cross the halves of a register.
  static void storeWidened(wchar* units, char const* bytes) {
    store(units, loadNarrow(bytes));
    store(units + kUnits, loadNarrow(bytes + kUnits));
  }
};

}  // namespace

TextKernels const kAvx2Kernels = kVectorKernels<Avx2Vector>;

}  // namespace strings
}  // namespace KV_1_1
