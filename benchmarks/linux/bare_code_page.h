// SPDX-License-Identifier: MIT
//
// Conversions by a page with one byte a character as a system does them that has several, and what they are used for, bare:
// the work of the contestants called "floor". On Windows the system converts.
#pragma once

#include <emmintrin.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "benchmarks/texts.h"

namespace KV_1_1 {
namespace bench {

// A page of which all bytes but those of a range are the numbers of their units.
class BarePage {
 public:
  static constexpr unsigned int kNumber = 1252;

  static int decode(unsigned int number, char const* bytes, int size, wchar* units, int capacity) {
    BarePage const* const page = find(number);
    if (page == nullptr) return 0;
    if (capacity == 0) return size;
    IsPlain const isPlain(*page);
    for (int i = 0; i < capacity; i += kBlock) {
      i = std::min(i, size - kBlock);
      __m128i const block = load(bytes + i);
      if (!isPlain(block)) return 0;
      store(units + i, _mm_unpacklo_epi8(block, _mm_setzero_si128()));
      store(units + i + kBlock / 2, _mm_unpackhi_epi8(block, _mm_setzero_si128()));
    }
    return size;
  }

  static int encode(unsigned int number, wchar const* units, int size, char* bytes, int capacity) {
    BarePage const* const page = find(number);
    if (page == nullptr) return 0;
    IsPlain const isPlain(*page);
    for (int i = 0; i < size; i += kBlock) {
      i = std::min(i, size - kBlock);
      __m128i const front = load(units + i);
      __m128i const back = load(units + i + kBlock / 2);
      __m128i const upper = _mm_srli_epi16(_mm_or_si128(front, back), 8);
      __m128i const block = _mm_packus_epi16(front, back);
      bool const isNarrow = _mm_movemask_epi8(_mm_cmpeq_epi8(upper, _mm_setzero_si128())) == 0xFFFF;
      if (!isNarrow || !isPlain(block)) return 0;
      if (capacity != 0) store(bytes + i, block);
    }
    return size;
  }

 private:
  static constexpr int kBlock = 16;

  static BarePage const* find(unsigned int number) {
    // A system's pages are not known to the compiler.
    static BarePage const* volatile newest = &kPages[0];
    BarePage const* page = newest;
    while (page != nullptr && page->number_ != number) page = page->older_;
    return page;
  }

  static __m128i load(void const* place) { return _mm_loadu_si128(static_cast<__m128i const*>(place)); }

  static void store(void* place, __m128i block) { _mm_storeu_si128(static_cast<__m128i*>(place), block); }

  // Whether no byte is of the page's range, which is moved to the lowest signed numbers, so that one comparison tells.
  class IsPlain {
   public:
    explicit IsPlain(BarePage const& page)
        : offset_(_mm_set1_epi8(static_cast<char>(0x80 - page.low_))),
          end_(_mm_set1_epi8(static_cast<char>(page.high_ - page.low_ - 0x80))) {}
    bool operator()(__m128i block) const {
      return _mm_movemask_epi8(_mm_cmpgt_epi8(_mm_add_epi8(block, offset_), end_)) == 0xFFFF;
    }

   private:
    __m128i offset_;
    __m128i end_;
  };

  constexpr BarePage(unsigned int number, int low, int high, BarePage const* older)
      : number_(number), low_(low), high_(high), older_(older) {}

  unsigned int number_;
  int low_;
  int high_;
  BarePage const* older_;

  static BarePage const kPages[2];
};

inline BarePage const BarePage::kPages[2] = {{1251, 0x80, 0xFF, &kPages[1]}, {kNumber, 0x80, 0x9F, nullptr}};

// Called through pointers, as functions of a system are.
inline decltype(&BarePage::decode) volatile systemDecode = &BarePage::decode;
inline decltype(&BarePage::encode) volatile systemEncode = &BarePage::encode;

// What a String is built by: the text is measured, the size is asked for, one block filled.
inline BareText bareFromPage(char const* bytes) {
  int const size = static_cast<int>(std::strlen(bytes)) + 1;
  int const units = systemDecode(BarePage::kNumber, bytes, size, nullptr, 0);
  BareText text(static_cast<std::size_t>(units) - 1);
  systemDecode(BarePage::kNumber, bytes, size, text.text(), units);
  return text;
}

inline NarrowText bareToPage(u16string const& text) {
  int const units = static_cast<int>(text.size());
  NarrowText narrow(systemEncode(BarePage::kNumber, text.data(), units, nullptr, 0));
  systemEncode(BarePage::kNumber, text.data(), units, narrow.bytes.get(), narrow.size);
  return narrow;
}

}  // namespace bench
}  // namespace KV_1_1
