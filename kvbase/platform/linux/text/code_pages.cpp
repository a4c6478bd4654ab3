// SPDX-License-Identifier: MIT
//
// Windows code pages by their numbers. They are converted by ICU: all the pages of Windows that ICU has a table for. 1200
// and 1201, which are not narrow text, are refused as Windows refuses them.
#include <stdlib.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <new>
#include <utility>

#include "kvbase/core/lazy.h"
#include "kvbase/export.h"
#include "kvbase/kernels/short_text.h"
#include "kvbase/kernels/text_kernels.h"
#include "kvbase/platform/internal/native_backends.h"
#include "kvbase/platform/linux/text/code_page_converter.h"
#include "kvbase/platform/narrow_text.h"

namespace KV_1_1 {
namespace platform {

namespace {

using strings::kernels;

// Pages are kept for later calls in memory from malloc: what a caller counts or limits by operator new is its own.
struct KeptDeleter {
  template <class T>
  void operator()(T* kept) const {
    kept->~T();
    free(kept);
  }
};
template <class T>
using Kept = std::unique_ptr<T, KeptDeleter>;

// Null if there is no memory.
template <class T, class... Arguments>
Kept<T> makeKept(Arguments&&... arguments) {
  void* const place = malloc(sizeof(T));
  return Kept<T>(place != nullptr ? new (place) T(std::forward<Arguments>(arguments)...) : nullptr);
}

// What a page with one byte a character does, as tables that the converter filled.
class OneByteTables {
 public:
  // Null if some bytes or characters of the page do not convert one to one, or there is no memory.
  static Kept<OneByteTables> madeBy(CodePageConverter& converter);

  int decode(char const* bytes, int size, wchar* units) const;
  // Both are false if there is a unit that the tables do not know.
  bool encode(wchar const* units, int size, char* bytes) const;
  bool knows(wchar const* units, int size) const;

  // The same in place, for short texts of characters whose units and bytes are the same numbers; false for any other text.
  bool decodeShort(char const* bytes, int size, wchar* units) const {
    return strings::widenShort(bytes, size, others_, units);
  }
  bool encodeShort(wchar const* units, int size, char* bytes) const {
    return strings::narrowShort(units, size, others_, bytes);
  }
  bool knowsShort(wchar const* units, int size) const { return strings::isShortLatin1(units, size); }

 private:
  static constexpr int kBytes = 256;
  static constexpr int kUnits = 0x10000;
  // So many characters are converted by tables before the next run of others is looked for.
  static constexpr int kRun = 32;

  bool readFrom(CodePageConverter& converter);
  bool isKnown(wchar unit) const { return bytes_[unit] != 0 || unit == 0; }

  wchar units_[kBytes];
  unsigned char bytes_[kUnits] = {};  // 0 for a unit that is not known
  // Outside this range units and bytes are the same numbers.
  strings::ByteRange others_ = {0xFF, 0xFF};
};

Kept<OneByteTables> OneByteTables::madeBy(CodePageConverter& converter) {
  if (!converter.isOneByte()) return nullptr;
  Kept<OneByteTables> tables = makeKept<OneByteTables>();
  if (tables != nullptr && !tables->readFrom(converter)) tables.reset();
  return tables;
}

bool OneByteTables::readFrom(CodePageConverter& converter) {
  unsigned char numbers[kBytes];
  wchar latin1[kBytes];
  for (int i = 0; i < kBytes; ++i) {
    numbers[i] = static_cast<unsigned char>(i);
    latin1[i] = static_cast<wchar>(i);
  }
  unsigned char back[kBytes];
  auto const encodes = [&](wchar const* units) {
    if (converter.encode(units, kBytes, reinterpret_cast<char*>(back), kBytes) != kBytes) return false;
    for (int i = 0; i < kBytes; ++i) bytes_[units[i]] = back[i];
    return true;
  };
  if (!encodes(latin1)) return false;
  if (converter.decode(reinterpret_cast<char const*>(numbers), kBytes, units_, kBytes) != kBytes) return false;
  if (!encodes(units_) || units_[0] != 0 || bytes_[0] != 0) return false;
  auto const isOther = [this](int i) { return units_[i] != i || bytes_[i] != i; };
  for (int i = kBytes - 2; i >= 0; --i) {
    if (isOther(i)) others_.low = static_cast<unsigned char>(i);
  }
  while (others_.high > others_.low && !isOther(others_.high)) --others_.high;
  return true;
}

int OneByteTables::decode(char const* bytes, int size, wchar* units) const {
  for (int i = 0; i < size;) {
    i += kernels().widen(bytes + i, size - i, others_, units + i);
    for (int const stop = std::min(i + kRun, size); i < stop; ++i) {
      units[i] = units_[static_cast<unsigned char>(bytes[i])];
    }
  }
  return size;
}

bool OneByteTables::encode(wchar const* units, int size, char* bytes) const {
  for (int i = 0; i < size;) {
    i += kernels().narrow(units + i, size - i, others_, bytes + i);
    for (int const stop = std::min(i + kRun, size); i < stop; ++i) {
      if (!isKnown(units[i])) return false;
      bytes[i] = static_cast<char>(bytes_[units[i]]);
    }
  }
  return true;
}

bool OneByteTables::knows(wchar const* units, int size) const {
  int i = kernels().findBeyondLatin1(units, size);
  while (i < size && isKnown(units[i])) ++i;
  return i == size;
}

// A code page that ICU has, with everything that is kept for its next conversion.
class CodePage {
 public:
  CodePage(unsigned int number, Kept<CodePageConverter> converter)
      : number_(number), tables_(OneByteTables::madeBy(*converter)), spare_(converter.release()) {}
  ~CodePage() { Kept<CodePageConverter> const last(spare_.load(std::memory_order_relaxed)); }

  unsigned int number() const { return number_; }

  int decode(char const* bytes, int size, wchar* units, int capacity);
  int encode(wchar const* units, int size, char* bytes, int capacity);

  // The same for what can be done in place; 0 if it cannot.
  int decodeShort(char const* bytes, int size, wchar* units, int capacity) const {
    bool const isDone =
        tables_ != nullptr && (capacity == 0 || (capacity >= size && tables_->decodeShort(bytes, size, units)));
    return isDone ? size : 0;
  }
  int encodeShort(wchar const* units, int size, char* bytes, int capacity) const {
    bool const isDone =
        tables_ != nullptr && (capacity == 0 ? tables_->knowsShort(units, size)
                                             : capacity >= size && tables_->encodeShort(units, size, bytes));
    return isDone ? size : 0;
  }

  CodePage* older = nullptr;

 private:
  template <class Work>
  int convert(Work work);

  unsigned int const number_;
  Kept<OneByteTables> const tables_;
  std::atomic<CodePageConverter*> spare_;
};

// Threads must not share a converter: one takes the spare one, others that come meanwhile open their own.
template <class Work>
int CodePage::convert(Work work) {
  // Acquire and release: the next owner sees the converter as this one has left it.
  Kept<CodePageConverter> converter(spare_.exchange(nullptr, std::memory_order_acquire));
  if (converter == nullptr) converter = makeKept<CodePageConverter>(number_);
  if (converter == nullptr || !converter->isOpen()) return 0;
  int const n = work(*converter);
  converter.reset(spare_.exchange(converter.release(), std::memory_order_acq_rel));
  return n;
}

int CodePage::decode(char const* bytes, int size, wchar* units, int capacity) {
  if (tables_ != nullptr) return capacity == 0 ? size : capacity < size ? 0 : tables_->decode(bytes, size, units);
  return convert([=](CodePageConverter& converter) { return converter.decode(bytes, size, units, capacity); });
}

int CodePage::encode(wchar const* units, int size, char* bytes, int capacity) {
  bool const isDone = tables_ != nullptr && (capacity == 0 ? tables_->knows(units, size)
                                                           : capacity >= size && tables_->encode(units, size, bytes));
  if (isDone) return size;
  return convert([=](CodePageConverter& converter) { return converter.encode(units, size, bytes, capacity); });
}

// The pages used so far. The list has no constructor and no destructor, so it may be used at any time.
std::atomic<CodePage*> newestPage{nullptr};

struct PagesOwner {
  ~PagesOwner() {
    for (CodePage* page = newestPage.exchange(nullptr, std::memory_order_acquire); page != nullptr;) {
      Kept<CodePage> const last(page);
      page = page->older;
    }
  }
};

// Null if ICU does not have the page or there is no memory. Threads that ask for a new page at the same time may each
// add it.
CodePage* addPage(unsigned int number) {
  static Lazy<PagesOwner> owner;
  Kept<CodePageConverter> converter = makeKept<CodePageConverter>(number);
  if (converter == nullptr || !converter->isOpen()) return nullptr;
  CodePage* const page = makeKept<CodePage>(number, std::move(converter)).release();
  if (page == nullptr) return nullptr;
  page->older = newestPage.load(std::memory_order_relaxed);
  // Release: whoever finds the page sees it complete.
  while (!newestPage.compare_exchange_weak(page->older, page, std::memory_order_release, std::memory_order_relaxed)) {
  }
  return page;
}

unsigned int ansiCodePageOfEnvironment() {
  char const* const text = getenv("KVBASE_ANSI_CODEPAGE");
  if (text == nullptr) return kUtf8CodePage;
  unsigned long const number = strtoul(text, nullptr, 10);
  return number == 0 || number > 65535 ? kUtf8CodePage : static_cast<unsigned int>(number);
}

// 0 until the first call. Threads that ask at the same time get the same result.
std::atomic<unsigned int> knownAnsiCodePage{0};

unsigned int currentAnsiCodePage() {
  unsigned int page = knownAnsiCodePage.load(std::memory_order_relaxed);
  if (page == 0) {
    page = ansiCodePageOfEnvironment();
    knownAnsiCodePage.store(page, std::memory_order_relaxed);
  }
  return page;
}

// The page of a number, 0 included; null if it has not been used yet.
inline CodePage* usedPage(unsigned int number) {
  if (number == kAnsiCodePage) number = knownAnsiCodePage.load(std::memory_order_relaxed);
  CodePage* page = newestPage.load(std::memory_order_acquire);
  while (page != nullptr && page->number() != number) page = page->older;
  return page;
}

// The same; null if there is none.
CodePage* pageOf(unsigned int number) {
  if (number == kAnsiCodePage) number = currentAnsiCodePage();
  CodePage* const page = usedPage(number);
  return page != nullptr ? page : addPage(number);
}

// Any text, after what is common has been tried.
KVBASE_NEVER_INLINE int decodeAny(unsigned int codePage, char const* bytes, int size, wchar* units, int capacity) {
  CodePage* const page = pageOf(codePage);
  return page != nullptr ? page->decode(bytes, size, units, capacity) : 0;
}

KVBASE_NEVER_INLINE int encodeAny(unsigned int codePage, wchar const* units, int size, char* bytes, int capacity) {
  CodePage* const page = pageOf(codePage);
  return page != nullptr ? page->encode(units, size, bytes, capacity) : 0;
}

}  // namespace

unsigned int NativeText::ansiCodePage() {
  return currentAnsiCodePage();
}

int NativeText::decode(unsigned int codePage, char const* bytes, int size, wchar* units, int capacity) {
  if (size <= 0 || capacity < 0) return 0;
  CodePage const* const page = usedPage(codePage);
  int const n = page != nullptr ? page->decodeShort(bytes, size, units, capacity) : 0;
  return n != 0 ? n : decodeAny(codePage, bytes, size, units, capacity);
}

int NativeText::encode(unsigned int codePage, wchar const* units, int size, char* bytes, int capacity) {
  if (size <= 0 || capacity < 0) return 0;
  CodePage const* const page = usedPage(codePage);
  int const n = page != nullptr ? page->encodeShort(units, size, bytes, capacity) : 0;
  return n != 0 ? n : encodeAny(codePage, units, size, bytes, capacity);
}

}  // namespace platform
}  // namespace KV_1_1
