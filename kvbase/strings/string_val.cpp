// SPDX-License-Identifier: MIT
#include "kvbase/strings/string_val.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

#include "kvbase/internal_assert.h"
#include "kvbase/kernels/front_search.h"
#include "kvbase/kernels/short_text.h"
#include "kvbase/kernels/text_kernels.h"
#include "kvbase/platform/narrow_text.h"
#include "kvbase/strings/internal/allocation.h"

namespace KV_1_1 {

namespace strings {
BlockAllocator blockAllocator = {&std::malloc, &std::realloc, &std::free};
}  // namespace strings

namespace {

constexpr char kEmptyNarrowText[] = "";

void copyUnits(wchar* to, wchar const* from, int units) {
  if (units > 0) std::memcpy(to, from, static_cast<std::size_t>(units) * sizeof(wchar));
}

std::size_t blockSize(long long capacity) {
  std::size_t const units = std::max(static_cast<std::size_t>(capacity) + 1, std::size_t{strings::kFrontUnits});
  return sizeof(StringVal) + units * sizeof(wchar);
}

// Memory for a payload with room for `capacity` units and a terminator: the one place that limits the length of a text.
inline void* newBlock(long long capacity) {
  KVBASE_ASSERT(capacity >= 0);
  if (capacity > INT_MAX) throw std::bad_alloc();
  void* const place = strings::blockAllocator.allocate(blockSize(capacity));
  if (place == nullptr) throw std::bad_alloc();
  return place;
}

// The block of a payload, cut to a smaller capacity.
void* cutBlock(void* block, int capacity) {
  void* const cut = strings::blockAllocator.cut(block, blockSize(capacity));
  return cut != nullptr ? cut : block;
}

// Units and a terminator as UTF-8 in a new array of exactly that size; null if that is beyond the range of int. A short text
// that is not ASCII is encoded on the stack; a long one that begins with ASCII is taken for ASCII until another character
// comes.
char* newUtf8(wchar const* units, int n) {
  constexpr strings::ByteRange kBeyondAscii = {0x80, 0xFF};
  std::size_t const least = static_cast<std::size_t>(n) + 1;
  if (strings::isShortAscii(units, n)) {
    char* const ascii = new char[least];
    strings::narrowShortAscii(units, n, ascii);
    ascii[n] = '\0';
    return ascii;
  }
  char brief[256];
  if (n < static_cast<int>(sizeof brief) / 3) {
    std::size_t const size = static_cast<std::size_t>(strings::kernels().toUtf8(units, n, brief));
    brief[size] = '\0';
    return static_cast<char*>(std::memcpy(new char[size + 1], brief, size + 1));
  }
  std::unique_ptr<char[]> ascii;
  int front = 0;
  if (units[0] < kBeyondAscii.low) {
    ascii.reset(new char[least]);
    front = strings::kernels().narrow(units, n, kBeyondAscii, ascii.get());
    ascii[least - 1] = '\0';
    if (front == n) return ascii.release();
  }
  long long const rest = strings::kernels().utf8Size(units + front, n - front);
  if (rest >= INT_MAX - front) return nullptr;
  std::unique_ptr<char[]> copy(new char[static_cast<std::size_t>(front + rest + 1)]);
  std::copy_n(ascii.get(), front, copy.get());
  strings::kernels().toUtf8(units + front, n - front, copy.get() + front);
  copy[static_cast<std::size_t>(front + rest)] = '\0';
  return copy.release();
}

}  // namespace

StringVal* StringVal::allocate(long long capacity) {
  return new (newBlock(capacity)) StringVal(KVW(""), 0, 0);
}

StringVal::StringVal(wchar const* text, int length, int) : references_(1), length_(length), narrow_{nullptr, nullptr} {
  std::memset(str(), 0, strings::kFrontUnits * sizeof(wchar));
  copyUnits(str(), text, length);
  str()[length] = 0;
}

StringVal::~StringVal() {
  delete[] narrow_[kAnsi];
  delete[] narrow_[kUtf8];
}

StringVal* StringVal::construct(void* place, wchar const* text, int length, int capacity) {
  return new (place) StringVal(text, length, capacity);
}

void StringVal::destruct(StringVal* payload) {
  payload->~StringVal();
  strings::blockAllocator.release(payload);
}

StringVal* StringVal::construct(wchar const* text, int length, int capacity) {
  if (length == -1) {
    length = strings::lengthFromFront(text);
  } else if (length >= 1 && text[length - 1] == 0) {
    --length;
  }
  if (capacity == -1) capacity = length;
  KVBASE_ASSERT(length >= 0 && capacity >= length);
  return new (newBlock(capacity)) StringVal(text, length, capacity);
}

StringVal* StringVal::construct(char const* text, int length, int capacity) {
  return decode(CodePageInterface(text, platform::kAnsiCodePage), length, capacity);
}

StringVal* StringVal::constructUsingCodepage(CodePageInterface text, int length, int capacity) {
  return text.data() != nullptr ? decode(text, length, capacity) : nullptr;
}

StringVal* StringVal::decode(CodePageInterface text, int length, int capacity) {
  constexpr int kShort = 256;
  // Beyond this a block of the greatest size might be too much memory.
  constexpr int kLong = 1 << 20;
  if (length >= 1 && text.data()[length - 1] == 0) --length;
  int const size = length != -1 ? length : platform::measureNarrow(text.data());
  bool const isUtf8 = size > 0 && capacity == -1 && platform::isUtf8(platform::text(), text.codePage());
  StringVal* payload = nullptr;
  int units = 0;
  if (isUtf8 && strings::isShortAscii(text.data(), size)) {
    payload = allocate(size);
    strings::widenShortAscii(text.data(), size, payload->str());
    units = size;
  } else if (isUtf8 && size <= kShort) {
    wchar decoded[kShort];
    units = strings::kernels().fromUtf8(text.data(), size, decoded, kShort);
    payload = new (newBlock(units)) StringVal(decoded, units, units);
  } else if (isUtf8 && size <= kLong) {
    payload = allocate(size);
    units = strings::kernels().fromUtf8(text.data(), size, payload->str(), size);
    if (units < size) payload = static_cast<StringVal*>(cutBlock(payload, units));
  } else {
    int const needed = platform::decodeNarrow(platform::text(), text.codePage(), text.data(), size, nullptr, 0);
    if (needed == 0) return nullptr;
    payload = allocate(std::max(capacity, needed));
    units = platform::decodeNarrow(platform::text(), text.codePage(), text.data(), size, payload->str(), needed);
    if (units == 0) {
      payload->unref();
      return nullptr;
    }
  }
  // The length rule may leave the last unit behind the length; this terminator keeps readers inside the block.
  payload->str()[units] = 0;
  payload->length_ = units == length ? length : units - 1;
  return payload;
}

StringVal* StringVal::concatenation(wchar const* text, int units) const {
  if (units == -1) units = strings::lengthFromFront(text);
  int const own = length();
  StringVal* const sum = new (newBlock(static_cast<long long>(own) + units)) StringVal(str(), own, 0);
  copyUnits(sum->str() + own, text, units);
  sum->length_ = own + units;
  sum->str()[sum->length_] = 0;
  return sum;
}

int StringVal::measure() const {
  length_ = strings::kernels().length(str());
  dropNarrowCopies();
  return length_;
}

void StringVal::dropNarrowCopies() const {
  for (char*& copy : narrow_) delete[] std::exchange(copy, nullptr);
}

void StringVal::reverse() {
  int const n = length();
  for (int i = 0; i < n / 2; ++i) {
    std::swap(str()[i], str()[n - 1 - i]);
    length_ = kUnknown;
  }
}

char const* StringVal::narrow(NarrowCopy which) const {
  // The text decides, not the stored length: after a NUL was written to the first unit the text is empty at once.
  if (str()[0] == 0) return kEmptyNarrowText;
  if (length_ == kUnknown) measure();
  if (narrow_[which] != nullptr) return narrow_[which];
  char* const copy = newNarrow(which);
  if (copy == nullptr) return kEmptyNarrowText;
  delete[] std::exchange(narrow_[which], copy);
  return copy;
}

// The text with its terminator in the code page, in a new array; null if it cannot be converted.
char* StringVal::newNarrow(NarrowCopy which) const {
  // With its terminator the greatest text is beyond what a conversion can be given.
  if (length_ == INT_MAX) return nullptr;
  unsigned int const codePage = which == kAnsi ? platform::kAnsiCodePage : platform::kUtf8CodePage;
  // COMPAT: the last unit of counted double-byte text stands at the length, and the terminator behind it.
  int const units = length_ + (str()[length_] == 0 ? 1 : 2);
  if (platform::isUtf8(platform::text(), codePage)) return newUtf8(str(), units - 1);
  int const size = platform::encodeNarrow(platform::text(), codePage, str(), units, nullptr, 0);
  if (size == 0) return nullptr;
  std::unique_ptr<char[]> copy(new char[static_cast<std::size_t>(size)]);
  if (platform::encodeNarrow(platform::text(), codePage, str(), units, copy.get(), size) == 0) return nullptr;
  return copy.release();
}

void StringVal::validityCheck(unsigned int) const {}

}  // namespace KV_1_1
