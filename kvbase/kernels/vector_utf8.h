// SPDX-License-Identifier: MIT
//
// The vector kernels for UTF-8: vectors for runs of ASCII and of similar characters, everything else character by
// character. See vector_kernels.h for the vector type V.
#pragma once

#include <emmintrin.h>

#include <cstring>
#include <iterator>

#include "kvbase/internal_assert.h"
#include "kvbase/kernels/scalar_kernels.h"
#include "kvbase/kernels/utf8_character.h"
#include "kvbase/kernels/vector_bytes.h"
#include "kvbase/kernels/vector_kernels.h"
#include "kvbase/text_unit.h"

namespace KV_1_1 {
namespace strings {
namespace {

// Size of UTF-16 text in UTF-8: a byte for each unit, one more from U+0080 and from U+0800 on, two less for a pair.
template <class V>
long long utf8Size(wchar const* units, int n) {
  int i = findBeyond<V, 0x7F>(units, n);
  long long size = i;  // of ASCII so far
  // One unit more than the vector is read, to see the other half of a pair.
  while (n - i > V::kUnits) {
    auto counts = V::zero();
    int const start = i;
    for (int vectors = 0; vectors < 0x1FFF && n - i > V::kUnits; ++vectors, i += V::kUnits) {
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

constexpr ByteRange kBeyondAscii = {0x80, 0xFF};

// So many units or bytes may be read from any place in front of which the functions below stop.
constexpr int kUnitsAhead = 16;
constexpr int kBytesAhead = 17;
// And so many by the conversion of eight characters of three bytes.
constexpr int kBytesOfEight = 28;

// Converts the characters that begin at i or later and in front of `stop`; returns where the next one begins. Up to eight
// bytes more than count are written.
template <class V>
int toUtf8Until(int stop, wchar const* units, int i, char*& end) {
  while (i < stop) {
    for (; i < stop; i += V::kUnits, end += V::kUnits) {
      auto const block = V::load(units + i);
      if (zeros<V>(V::bitAnd(block, V::of(0xFF80))) != kAllUnits<V>) break;
      V::storeNarrow(end, block);
    }
    if constexpr (V::kConvertsRuns) {
      // Eight units at a time, but back to ASCII behind eight of it.
      int size = 1;
      while (i < stop && size != 0 && size != 8) {
        size = V::toUtf8(units + i, end);
        end += size;
        if (size != 0) i += 8;
      }
      if (size == 8) continue;
    }
    // Other characters come in runs too, so the next vector is tried only behind as many of them as a vector has units.
    for (int const next = stop - i > V::kUnits ? i + V::kUnits : stop; i < next;) {
      Utf16Character const character = readUtf16(units + i, 2);
      end = writeUtf8(character.code, end);
      i += character.units;
    }
  }
  return i;
}

template <class V>
long long toUtf8(wchar const* units, int n, char* bytes) {
  int const ascii = n > 0 && units[0] < 0x80 ? narrow<V>(units, n, kBeyondAscii, bytes) : 0;
  if (ascii == n) return n;
  char* end = bytes + ascii;
  int i = toUtf8Until<V>(n - kUnitsAhead + 1, units, ascii, end);
  if constexpr (V::kConvertsRuns) {
    // More is written than counts, so the last whole block takes the way of the stack.
    char block[32];
    int const size = n - i >= 8 ? V::toUtf8(units + i, block) : 0;
    std::memcpy(end, block, static_cast<std::size_t>(size));
    end += size;
    if (size != 0) i += 8;
  }
  return end - bytes + toUtf8Scalar(units + i, n - i, end);
}

// Reads the characters that begin at i or later and in front of `stop`; returns where the next one begins. That may be less
// than kBytesOfEight in front of `readable`, the end of what may be read, where only the padded end can be read eight
// characters at a time. A Sink takes V::kUnits ASCII characters at a time by ascii(bytes), up to eight units at a time by
// units(block, count), and any one character by character(code). Blocks of fewer units are given to it while hasRoom().
template <class V, class Sink>
int readUtf8Until(int stop, int readable, char const* bytes, int i, Sink& sink) {
  while (i < stop) {
    for (; i < stop && V::isAscii(bytes + i); i += V::kUnits) sink.ascii(bytes + i);
    if constexpr (V::kConvertsRuns) {
      __m128i block;
      // These two read less and write exactly what counts, so they may go on to the end of what is readable.
      for (; readable - i >= 16 && V::fromFourBytes(bytes + i, block); i += 16) sink.units(block, 8);
      for (; readable - i >= kBytesOfEight && V::fromLongUtf8(bytes + i, block); i += 24) sink.units(block, 8);
      if (i < stop && readable - i < kBytesOfEight && (bytes[i] & 0xF0) == 0xE0) return i;
      for (int taken = 1; i < stop && taken != 0 && sink.hasRoom(); i += taken) {
        taken = V::fromShortUtf8(bytes + i, sink);
      }
    }
    for (int const next = stop - i > V::kUnits ? i + V::kUnits : stop; i < next;) {
      Utf8Character const character = readUtf8(bytes + i, 4);
      sink.character(character.code);
      i += character.bytes;
    }
  }
  return i;
}

// The last part of a text, followed by NULs that may be read ahead. They stand for themselves.
struct PaddedEnd {
  char bytes[2 * kBytesOfEight] = {};

  PaddedEnd(char const* from, int n) {
    KVBASE_ASSERT(n < kBytesOfEight);
    std::memcpy(bytes, from, static_cast<std::size_t>(n));
  }
};

template <class V>
struct UnitCounter {
  int size = 0;

  bool hasRoom() const { return true; }
  void ascii(char const*) { size += V::kUnits; }
  void units(__m128i, int count) { size += count; }
  void character(unsigned int code) { size += code < 0x10000 ? 1 : 2; }
};

template <class V>
struct UnitWriter {
  wchar* end;
  wchar const* limit;

  // For two blocks, which are written whole, whatever counts of them.
  bool hasRoom() const { return limit - end >= 16; }
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
  int const i = readUtf8Until<V>(n - kBytesAhead + 1, n, bytes, 0, counter);
  PaddedEnd const rest(bytes + i, n - i);
  int const read = readUtf8Until<V>(n - i, n - i - 1 + kBytesOfEight, rest.bytes, 0, counter);
  return counter.size - (read - (n - i));  // without the NULs
}

template <class V>
int fromUtf8(char const* bytes, int n, wchar* units, int room) {
  int const ascii = n > 0 && (bytes[0] & 0x80) == 0 ? widen<V>(bytes, n, kBeyondAscii, units) : 0;
  if (ascii == n) return n;
  UnitWriter<V> writer = {units + ascii, units + room};
  int const i = readUtf8Until<V>(n - kBytesAhead + 1, n, bytes, ascii, writer);
  if (n - i < kFew) return static_cast<int>(writer.end - units) + fromUtf8Scalar(bytes + i, n - i, writer.end, n - i);
  PaddedEnd const rest(bytes + i, n - i);
  wchar last[2 * kBytesOfEight];
  UnitWriter<V> lastWriter = {last, std::end(last)};
  int const read = readUtf8Until<V>(n - i, n - i - 1 + kBytesOfEight, rest.bytes, 0, lastWriter);
  lastWriter.end -= read - (n - i);  // without the NULs
  std::memcpy(writer.end, last, static_cast<std::size_t>(lastWriter.end - last) * sizeof(wchar));
  return static_cast<int>(writer.end - units + (lastWriter.end - last));
}

}  // namespace
}  // namespace strings
}  // namespace KV_1_1
