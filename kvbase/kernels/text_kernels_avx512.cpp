// SPDX-License-Identifier: MIT
//
// The only source compiled for AVX-512. Nothing in it may be called before chooseKernels has found that the processor has it.
//
// UTF-8 is where AVX-512 pays. Each lane of a register holds what one unit or byte gives, and the lanes that count are moved
// together, so mixed text needs no step for each character. Masks cover the end of a text: nothing behind it is read or
// written.
#include <immintrin.h>

#include "kvbase/kernels/text_kernels.h"
#include "kvbase/kernels/utf8_character.h"

namespace KV_1_1 {
namespace strings {

namespace {

// One bit for each byte, the first one lowest.
using ByteMask = unsigned long long;

constexpr int kUnits = 32;  // of a register
constexpr int kBytes = 64;

inline int atMost(int n, int most) {
  return n < most ? n : most;
}

inline ByteMask firstBytes(int n) {
  return n < kBytes ? _bzhi_u64(~0ull, static_cast<unsigned int>(n)) : ~0ull;
}

inline __mmask32 firstUnits(int n) {
  return n < kUnits ? _bzhi_u32(~0u, static_cast<unsigned int>(n)) : ~0u;
}

inline __mmask16 firstCodes(int n) {
  return static_cast<__mmask16>(firstUnits(n));
}

inline int countOf(ByteMask mask) {
  return static_cast<int>(_mm_popcnt_u64(mask));
}

inline __m512i ofBytes(int byte) {
  return _mm512_set1_epi8(static_cast<char>(byte));
}

inline __m512i ofUnits(int unit) {
  return _mm512_set1_epi16(static_cast<short>(unit));
}

inline __m512i ofCodes(unsigned int code) {
  return _mm512_set1_epi32(static_cast<int>(code));
}

// The bits of `yes` where those of the mask are set, those of `no` elsewhere.
inline __m512i select(__m512i mask, __m512i yes, __m512i no) {
  return _mm512_ternarylogic_epi32(mask, yes, no, 0xCA);
}

inline __m256i firstHalf(__m512i block) {
  return _mm512_castsi512_si256(block);
}

inline __m256i secondHalf(__m512i block) {
  return _mm512_extracti64x4_epi64(block, 1);
}

// The units that do not take three bytes, by their upper five bits: they are below U+0800, or surrogates.
inline __mmask32 notOfThreeBytes(__m512i upper) {
  return _mm512_testn_epi16_mask(upper, upper) | _mm512_cmpeq_epi16_mask(upper, ofUnits(0xD800));
}

// --- To UTF-8 ----------------------------------------------------------------------------------------------------------

// A byte for each unit, one more from U+0080 and from U+0800 on, two less for a pair.
long long utf8Size(wchar const* units, int n) {
  long long size = n > 0 ? n : 0;
  unsigned int highInFront = 0;
  for (; n > 0; units += kUnits, n -= kUnits) {
    __m512i const block = _mm512_maskz_loadu_epi16(firstUnits(n), units);
    size += countOf(_mm512_test_epi16_mask(block, ofUnits(0xFF80)));
    __mmask32 const wide = _mm512_test_epi16_mask(block, ofUnits(0xF800));
    if (wide != 0) {
      __m512i const halves = _mm512_and_si512(block, ofUnits(0xFC00));
      __mmask32 const highs = _mm512_cmpeq_epi16_mask(halves, ofUnits(0xD800));
      __mmask32 const lows = _mm512_cmpeq_epi16_mask(halves, ofUnits(0xDC00));
      size += countOf(wide) - 2 * countOf((highs << 1 | highInFront) & lows);
      highInFront = highs >> 31;
    } else {
      highInFront = 0;
    }
  }
  return size;
}

// Writes the bytes that count; returns their end.
inline char* writeBytes(__m512i bytes, ByteMask counting, char* to) {
  int const size = countOf(counting);
  _mm512_mask_storeu_epi8(to, firstBytes(size), _mm512_maskz_compress_epi8(counting, bytes));
  return to + size;
}

// Each of 16 codes in a lane of four bytes, the last six bits in the last byte, under the marks of the bytes.
inline __m512i sequencesOf(__m512i codes, __m512i marks) {
  __m512i const sixBitsEach = _mm512_multishift_epi64_epi8(_mm512_set1_epi64(0x20262C3200060C12), codes);
  return _mm512_ternarylogic_epi32(sixBitsEach, ofBytes(0x3F), marks, 0xEA);
}
constexpr unsigned int kOneByte = 0x80000000;  // the character itself is written over the mark
constexpr unsigned int kTwoBytes = 0x80C00000;
constexpr unsigned int kThreeBytes = 0x8080E000;
constexpr unsigned int kFourBytes = 0x808080F0;

inline __m512i codesOfPairs(__m512i highs, __m512i lows) {
  constexpr unsigned int kBase = 0x10000u - (0xD800u << 10) - 0xDC00u;
  return _mm512_add_epi32(_mm512_add_epi32(_mm512_slli_epi32(highs, 10), lows), ofCodes(kBase));
}

// Writes n units below U+0800; returns the end.
inline char* writeShort(__m512i units, int n, char* to) {
  __mmask32 const two = _mm512_test_epi16_mask(units, ofUnits(0xFF80));
  if (two == 0) {
    _mm256_mask_storeu_epi8(to, firstUnits(n), _mm512_cvtepi16_epi8(units));
    return to + n;
  }
  // A lane holds the first byte and the second one.
  __m512i const bits = select(ofUnits(0xFF), _mm512_srli_epi16(units, 6), _mm512_slli_epi16(units, 8));
  __m512i const marked = _mm512_ternarylogic_epi32(bits, ofUnits(0x3F1F), ofUnits(0x80C0), 0xEA);
  ByteMask const counting = 0x5555555555555555 | _pdep_u64(two, 0xAAAAAAAAAAAAAAAA);
  return writeBytes(_mm512_mask_mov_epi16(units, two, marked), counting & firstBytes(2 * n), to);
}

// Writes the first n of 16 units of three bytes each; returns the end.
inline char* writeThrees(__m256i units, int n, char* to) {
  __m512i const order =
      _mm512_setr_epi32(0x05030201, 0x0A090706, 0x0F0E0D0B, 0x15131211, 0x1A191716, 0x1F1E1D1B, 0x25232221, 0x2A292726,
                        0x2F2E2D2B, 0x35333231, 0x3A393736, 0x3F3E3D3B, 0, 0, 0, 0);
  __m512i const sequences = sequencesOf(_mm512_cvtepu16_epi32(units), ofCodes(kThreeBytes));
  int const size = 3 * n;
  _mm512_mask_storeu_epi8(to, firstBytes(size), _mm512_permutexvar_epi8(order, sequences));
  return to + size;
}

// Writes the first n units of 16 pairs of surrogates; returns the end.
inline char* writeFours(__m512i pairs, int n, char* to) {
  __m512i const codes = codesOfPairs(_mm512_and_si512(pairs, ofCodes(0xFFFF)), _mm512_srli_epi32(pairs, 16));
  int const size = 2 * n;
  _mm512_mask_storeu_epi8(to, firstBytes(size), sequencesOf(codes, ofCodes(kFourBytes)));
  return to + size;
}

// Writes the characters that begin in the first 16 of n units; returns how many units they take.
inline int writeMixed(wchar const* units, int n, char*& to) {
  __mmask16 const lanes = firstCodes(n);
  __m512i const block = _mm512_cvtepu16_epi32(_mm256_maskz_loadu_epi16(lanes, units));
  __m512i const behind = _mm512_cvtepu16_epi32(_mm256_maskz_loadu_epi16(firstCodes(n - 1), units + 1));
  __m512i const kHalves = ofCodes(0xFC00);
  __mmask16 const high = _mm512_cmpeq_epi32_mask(_mm512_and_si512(block, kHalves), ofCodes(0xD800));
  __mmask16 const low = _mm512_cmpeq_epi32_mask(_mm512_and_si512(block, kHalves), ofCodes(0xDC00));
  __mmask16 const four = _mm512_mask_cmpeq_epi32_mask(high, _mm512_and_si512(behind, kHalves), ofCodes(0xDC00));
  __m512i codes = _mm512_mask_mov_epi32(block, high | low, ofCodes(kReplacement));
  codes = _mm512_mask_mov_epi32(codes, four, codesOfPairs(block, behind));

  __mmask16 const one = _mm512_cmplt_epu32_mask(codes, ofCodes(0x80));
  __m512i marks = _mm512_mask_mov_epi32(ofCodes(kTwoBytes), one, ofCodes(kOneByte));
  marks = _mm512_mask_mov_epi32(marks, _mm512_cmpge_epu32_mask(codes, ofCodes(0x800)), ofCodes(kThreeBytes));
  marks = _mm512_mask_mov_epi32(marks, four, ofCodes(kFourBytes));
  // The second half of a pair counts with the first one.
  marks = _mm512_maskz_mov_epi32(lanes & static_cast<__mmask16>(~(four << 1)), marks);
  __m512i const sequences = _mm512_mask_slli_epi32(sequencesOf(codes, marks), one, codes, 24);
  to = writeBytes(sequences, _mm512_movepi8_mask(marks), to);
  return 16 + (four >> 15);
}

long long toUtf8(wchar const* units, int n, char* bytes) {
  char* end = bytes;
  for (int taken = 0; n > 0; units += taken, n -= taken) {
    taken = atMost(n, kUnits);
    __mmask32 const lanes = firstUnits(n);
    __m512i const block = _mm512_maskz_loadu_epi16(lanes, units);
    __m512i const upper = _mm512_and_si512(block, ofUnits(0xF800));
    __m512i const halves = _mm512_and_si512(block, ofCodes(0xFC00FC00));
    if (_mm512_test_epi16_mask(upper, upper) == 0) {
      end = writeShort(block, taken, end);
    } else if ((notOfThreeBytes(upper) & lanes) == 0) {
      end = writeThrees(_mm512_castsi512_si256(block), atMost(taken, 16), end);
      if (taken > 16) end = writeThrees(_mm512_extracti64x4_epi64(block, 1), taken - 16, end);
    } else if (_mm512_cmpeq_epi32_mask(halves, ofCodes(0xDC00D800)) == firstCodes((taken + 1) / 2)) {
      end = writeFours(block, taken, end);
    } else {
      taken = writeMixed(units, n, end);
    }
  }
  return end - bytes;
}

// --- From UTF-8 --------------------------------------------------------------------------------------------------------

// Writes the units that count; returns their end.
inline wchar* writeUnits(__m512i units, __mmask32 counting, wchar* to) {
  int const size = countOf(counting);
  _mm512_mask_storeu_epi16(to, firstUnits(size), _mm512_maskz_compress_epi16(counting, units));
  return to + size;
}

// Whether those of 16 lanes hold what is wanted under the bits of `marks`.
inline bool areMarked(__m512i sequences, unsigned int marks, unsigned int wanted, __mmask16 lanes) {
  return _mm512_mask_cmpneq_epi32_mask(lanes, _mm512_and_si512(sequences, ofCodes(marks)), ofCodes(wanted)) == 0;
}

// Reads n sequences of three bytes, at most 16; false if anything else is among them.
inline bool readThrees(char const* bytes, int n, wchar* to) {
  // The last byte of each lane is not used.
  __m512i const order =
      _mm512_setr_epi32(0x102, 0x30405, 0x60708, 0x90A0B, 0xC0D0E, 0xF1011, 0x121314, 0x151617, 0x18191A, 0x1B1C1D,
                        0x1E1F20, 0x212223, 0x242526, 0x272829, 0x2A2B2C, 0x2D2E2F);
  __m512i const sequences = _mm512_permutexvar_epi8(order, _mm512_maskz_loadu_epi8(firstBytes(3 * n), bytes));
  __m512i const twelve = select(ofCodes(0x3F), sequences, _mm512_srli_epi32(sequences, 2));
  __m512i const codes = select(ofCodes(0xFFF), twelve, _mm512_srli_epi32(sequences, 4));
  __m512i const units = _mm512_castsi256_si512(_mm512_cvtepi32_epi16(codes));
  bool const areThrees = areMarked(sequences, 0xF0C0C0, 0xE08080, firstCodes(n)) &&
                         (notOfThreeBytes(_mm512_and_si512(units, ofUnits(0xF800))) & firstUnits(n)) == 0;
  if (areThrees) _mm512_mask_storeu_epi16(to, firstUnits(n), units);
  return areThrees;
}

// The same for sequences of four bytes.
inline bool readFours(char const* bytes, int n, wchar* to) {
  __m512i const order =
      _mm512_set_epi64(0x3C3D3E3F38393A3B, 0x3435363730313233, 0x2C2D2E2F28292A2B, 0x2425262720212223,
                       0x1C1D1E1F18191A1B, 0x1415161710111213, 0x0C0D0E0F08090A0B, 0x0405060700010203);
  __m512i const sequences = _mm512_permutexvar_epi8(order, _mm512_maskz_loadu_epi8(firstBytes(4 * n), bytes));
  __m512i const twelve = select(ofCodes(0x3F), sequences, _mm512_srli_epi32(sequences, 2));
  __m512i const nine = select(ofCodes(0x3F000), _mm512_srli_epi32(sequences, 4), _mm512_srli_epi32(sequences, 6));
  __m512i codes = _mm512_and_si512(select(ofCodes(0xFFF), twelve, nine), ofCodes(0x1FFFFF));
  // Twenty bits, or the sequence is over-long or beyond the last character.
  codes = _mm512_sub_epi32(codes, ofCodes(0x10000));
  bool const areFours =
      areMarked(sequences, 0xF8C0C0C0, 0xF0808080, firstCodes(n)) && areMarked(codes, 0xFFF00000, 0, firstCodes(n));
  if (!areFours) return false;
  __m512i const halves = select(ofCodes(0x3FF), _mm512_srli_epi32(codes, 10), _mm512_slli_epi32(codes, 16));
  __m512i const pairs = select(ofCodes(0x03FF03FF), halves, ofCodes(0xDC00D800));
  _mm512_mask_storeu_epi16(to, firstUnits(2 * n), pairs);
  return true;
}

// Reads sequences of kSize bytes while there are only such, 16 at a time, and what is left of n bytes; returns how many bytes
// that makes. read(bytes, n, to) reads n of them, each for kMade units.
template <int kSize, int kMade, class Read>
inline int readRun(char const* bytes, int n, Read read, wchar*& to) {
  constexpr int kRead = 16 * kSize;
  constexpr int kWritten = 16 * kMade;
  int taken = 0;
  for (; n - taken >= kRead; taken += kRead, to += kWritten) {
    if (!read(bytes + taken, 16, to)) return taken;
  }
  int const rest = (n - taken) / kSize;
  int const written = rest * kMade;
  if (rest == 0 || !read(bytes + taken, rest, to)) return taken;
  to += written;
  return taken + rest * kSize;
}

// 32 bytes, each with the two behind it, and what each is.
struct HalfBlock {
  __m256i first;
  __m256i second;
  __m256i third;
  __mmask32 leads;   // of two bytes or more
  __mmask32 threes;  // of three or more
  __mmask32 fours;
  __mmask32 lows;  // the bytes behind those of four
};

// The unit of each byte that begins a character, and behind one that begins four bytes the second half of its pair. False if a
// sequence is over-long, a surrogate or beyond the last character.
inline bool decode(HalfBlock const& half, __m512i& units) {
  __m512i const first = _mm512_cvtepu8_epi16(half.first);
  __m512i const second = _mm512_cvtepu8_epi16(half.second);
  __m512i const six = _mm512_slli_epi16(first, 6);
  __m512i const twos = select(ofUnits(0x3F), second, _mm512_and_si512(six, ofUnits(0x7FF)));
  units = _mm512_mask_mov_epi16(first, half.leads, twos);
  if (half.threes == 0 && half.lows == 0) return true;
  __m512i const third = _mm512_cvtepu8_epi16(half.third);
  __m512i const twelve = select(ofUnits(0x3F), third, _mm512_slli_epi16(second, 6));
  __m512i const threes = select(ofUnits(0xFFF), twelve, _mm512_slli_epi16(first, 12));
  units = _mm512_mask_mov_epi16(units, half.threes, threes);
  __mmask32 const wrong = notOfThreeBytes(_mm512_and_si512(threes, ofUnits(0xF800))) & half.threes & ~half.fours;
  if (half.fours == 0 && half.lows == 0) return wrong == 0;
  __m512i const eight = select(ofUnits(0xFF), _mm512_slli_epi16(second, 2), _mm512_slli_epi16(first, 8));
  __m512i const ten = select(ofUnits(3), _mm512_srli_epi16(third, 4), eight);
  // Ten bits behind the mark of a first half, or the sequence is over-long or beyond the last character.
  __m512i const highs = _mm512_add_epi16(_mm512_and_si512(ten, ofUnits(0x7FF)), ofUnits(0xD800 - 0x40));
  units = _mm512_mask_mov_epi16(units, half.fours, highs);
  units = _mm512_mask_mov_epi16(units, half.lows, select(ofUnits(0x3FF), twelve, ofUnits(0xDC00)));
  __m512i const marks = _mm512_and_si512(highs, ofUnits(0xFC00));
  return (wrong | _mm512_mask_cmpneq_epi16_mask(half.fours, marks, ofUnits(0xD800))) == 0;
}

// Reads the characters that begin in the first 61 of n bytes, so that a block of 64 holds all of each; returns how many bytes
// they take, 0 if not all of them are valid.
inline int readMixed(char const* bytes, int n, wchar*& to) {
  ByteMask const lanes = firstBytes(n);
  __m512i const block = _mm512_maskz_loadu_epi8(lanes, bytes);
  ByteMask const allBeyondAscii = _mm512_movepi8_mask(block);
  if (allBeyondAscii == 0) {
    _mm512_mask_storeu_epi16(to, firstUnits(n), _mm512_cvtepu8_epi16(firstHalf(block)));
    if (n > kUnits) {
      _mm512_mask_storeu_epi16(to + kUnits, firstUnits(n - kUnits), _mm512_cvtepu8_epi16(secondHalf(block)));
    }
    to += atMost(n, kBytes);
    return atMost(n, kBytes);
  }
  ByteMask const tails = _mm512_cmplt_epi8_mask(block, ofBytes(-64));
  // C0, C1 and what is beyond F4 begin nothing.
  ByteMask const allLeads = _mm512_cmple_epu8_mask(_mm512_sub_epi8(block, ofBytes(0xC2)), ofBytes(0xF4 - 0xC2));
  int const taken = atMost(n, 61 + static_cast<int>(_tzcnt_u64(~(tails >> 61))));
  ByteMask const takenBytes = firstBytes(taken);
  ByteMask const leads = allLeads & takenBytes;
  ByteMask const threes = _mm512_cmpge_epu8_mask(block, ofBytes(0xE0)) & leads;
  ByteMask const fours = _mm512_cmpge_epu8_mask(block, ofBytes(0xF0)) & leads;
  ByteMask const expectedTails = leads << 1 | threes << 2 | fours << 3;
  ByteMask const beyondAscii = allBeyondAscii & takenBytes;
  if (expectedTails != (tails & takenBytes) || (expectedTails | leads) != beyondAscii) return 0;

  __m512i const second = _mm512_maskz_loadu_epi8(lanes >> 1, bytes + 1);
  __m512i const third = _mm512_maskz_loadu_epi8(lanes >> 2, bytes + 2);
  ByteMask const lows = fours << 1;
  auto const half = [&](__m256i (*of)(__m512i), int begin) {
    auto const lane = [begin](ByteMask mask) { return static_cast<__mmask32>(mask >> begin); };
    return HalfBlock{of(block), of(second), of(third), lane(leads), lane(threes), lane(fours), lane(lows)};
  };
  __m512i front;
  __m512i back;
  if (!decode(half(&firstHalf, 0), front) || !decode(half(&secondHalf, kUnits), back)) return 0;
  ByteMask const counting = (takenBytes & ~tails) | lows;
  to = writeUnits(front, static_cast<__mmask32>(counting), to);
  to = writeUnits(back, static_cast<__mmask32>(counting >> kUnits), to);
  return taken;
}

// Reads a block of n bytes character by character; returns how many bytes they take.
inline int readEach(char const* bytes, int n, wchar*& to) {
  int taken = 0;
  while (taken < atMost(n, kBytes)) {
    Utf8Character const character = readUtf8(bytes + taken, n - taken);
    to = writeUtf16(character.code, to);
    taken += character.bytes;
  }
  return taken;
}

int fromUtf8(char const* bytes, int n, wchar* units, int) {
  int taken = n > 0 && (bytes[0] & 0x80) == 0 ? kAvx2Kernels.widen(bytes, n, {0x80, 0xFF}, units) : 0;
  wchar* end = units + taken;
  while ((n -= taken) > 0) {
    bytes += taken;
    unsigned char const lead = static_cast<unsigned char>(bytes[0]);
    taken = lead >= 0xF0   ? readRun<4, 2>(bytes, n, &readFours, end)
            : lead >= 0xE0 ? readRun<3, 1>(bytes, n, &readThrees, end)
                           : 0;
    if (taken != 0) continue;
    taken = readMixed(bytes, n, end);
    if (taken == 0) taken = readEach(bytes, n, end);
  }
  return static_cast<int>(end - units);
}

}  // namespace

TextKernels const& avx512Kernels() {
  static TextKernels const all = [] {
    TextKernels result = kAvx2Kernels;
    result.utf8Size = &utf8Size;
    result.toUtf8 = &toUtf8;
    result.fromUtf8 = &fromUtf8;
    return result;
  }();
  return all;
}

}  // namespace strings
}  // namespace KV_1_1
