// SPDX-License-Identifier: MIT
//
// The vector kernels for UTF-8: vectors for runs of ASCII and of similar characters, everything else character by
// character. See vector_kernels.h for the vector type V.
#pragma once

#include <emmintrin.h>

#include "kvbase/kernels/scalar_kernels.h"
#include "kvbase/kernels/utf8_character.h"
#include "kvbase/kernels/vector_kernels.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace strings {
namespace {

// Size of UTF-16 text in UTF-8: a byte for each unit, one more from U+0080 and from U+0800 on, two less for a pair.
template <class V>
long long utf8Size(wchar const* units, int n) {
  int i = 0;
  while (i + V::kUnits <= n &&
         V::mask(V::equal(V::bitAnd(V::load(units + i), V::of(0xFF80)), V::zero())) == kAllUnits<V>) {
    i += V::kUnits;
  }
  long long size = i;  // of ASCII so far
  // One unit more than the vector is read, to see the other half of a pair.
  while (i + V::kUnits < n) {
    auto counts = V::zero();
    int const start = i;
    for (int vectors = 0; vectors < 0x1FFF && i + V::kUnits < n; ++vectors, i += V::kUnits) {
      auto const block = V::load(units + i);
      auto const long2 = V::bitNot(V::equal(V::bitAnd(block, V::of(0xFF80)), V::zero()));
      auto const long3 = V::bitNot(V::equal(V::bitAnd(block, V::of(0xF800)), V::zero()));
      auto const high = V::equal(V::bitAnd(block, V::of(0xFC00)), V::of(0xD800));
      auto const low = V::equal(V::bitAnd(V::load(units + i + 1), V::of(0xFC00)), V::of(0xDC00));
      auto const pair = V::bitAnd(high, low);
      counts = V::sub(counts, V::add(long2, long3));
      counts = V::add(counts, V::add(pair, pair));
    }
    size += i - start + V::sumOfUnits(counts);
  }
  // A pair split here still counts as four bytes: its first half was counted as one byte, and its second half alone
  // counts as three.
  return size + utf8SizeScalar(units + i, n - i);
}

template <class V>
long long toUtf8(wchar const* units, int n, char* bytes) {
  char* end = bytes;
  for (int i = 0; i < n;) {
    for (; i + V::kUnits <= n; i += V::kUnits, end += V::kUnits) {
      auto const block = V::load(units + i);
      if (V::mask(V::bitNot(V::equal(V::bitAnd(block, V::of(0xFF80)), V::zero()))) != 0) break;
      V::storeNarrow(end, block);
    }
    if constexpr (V::kConvertsRuns) {
      // Eight units at a time. More bytes are written than count; at least eight more units follow, so there is room.
      int size = 0;
      while (i + 16 <= n) {
        size = V::toShortUtf8(units + i, end);
        if (size == 0 && V::toLongUtf8(units + i, end)) size = 24;
        if (size == 0) break;
        i += 8;
        end += size;
        if (size == 8) break;
      }
      if (size == 8) continue;  // back to ASCII
    }
    // Other characters come in runs too, so the next vector is tried only behind as many of them as a vector has units.
    for (int stop = i + V::kUnits < n ? i + V::kUnits : n; i < stop;) {
      Utf16Character const character = readUtf16(units + i, n - i);
      end = writeUtf8(character.code, end);
      i += character.units;
    }
  }
  return end - bytes;
}

// Reads UTF-8 piece by piece. A Sink takes V::kUnits ASCII characters at a time by ascii(bytes), up to eight units at a
// time by units(block, count), and any one character by character(code).
template <class V, class Sink>
void readUtf8Text(char const* bytes, int n, Sink& sink) {
  for (int i = 0; i < n;) {
    for (; i + V::kUnits <= n && V::isAscii(bytes + i); i += V::kUnits) sink.ascii(bytes + i);
    if constexpr (V::kConvertsRuns) {
      __m128i block;
      for (; i + 28 <= n && V::fromLongUtf8(bytes + i, block); i += 24) sink.units(block, 8);
      // Blocks of fewer units are written whole. The 24 bytes behind them decode to at least eight units, so there is
      // room.
      for (int taken = 1; i + 40 <= n && taken != 0; i += taken) taken = V::fromShortUtf8(bytes + i, sink);
    }
    for (int stop = i + V::kUnits < n ? i + V::kUnits : n; i < stop;) {
      Utf8Character const character = readUtf8(bytes + i, n - i);
      sink.character(character.code);
      i += character.bytes;
    }
  }
}

template <class V>
struct UnitCounter {
  int size = 0;

  void ascii(char const*) { size += V::kUnits; }
  void units(__m128i, int count) { size += count; }
  void character(unsigned int code) { size += code < 0x10000 ? 1 : 2; }
};

template <class V>
struct UnitWriter {
  wchar* end;

  void ascii(char const* bytes) {
    V::store(end, V::loadNarrow(bytes));
    end += V::kUnits;
  }
  void units(__m128i block, int count) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(end), block);
    end += count;
  }
  void character(unsigned int code) { end = writeUtf16(code, end); }
};

template <class V>
int utf16Size(char const* bytes, int n) {
  UnitCounter<V> counter;
  readUtf8Text<V>(bytes, n, counter);
  return counter.size;
}

template <class V>
int fromUtf8(char const* bytes, int n, wchar* units) {
  UnitWriter<V> writer{units};
  readUtf8Text<V>(bytes, n, writer);
  return static_cast<int>(writer.end - units);
}

}  // namespace
}  // namespace strings
}  // namespace KV_1_1
