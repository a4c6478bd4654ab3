// SPDX-License-Identifier: MIT
#include "kvbase/strings/string_buffer.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <utility>

#include "kvbase/strings/internal/string_access.h"
#include "kvbase/strings/kv_string.h"

namespace KV_1_1 {

namespace {

// An array of size + 1 elements that starts with as much of the text as fits.
template <class Character>
Character* newArray(int size, Character const* text, std::size_t length) {
  std::size_t const room = static_cast<std::size_t>(size);
  Character* array = new Character[room + 1];
  array[room] = 0;
  std::size_t const kept = std::min(length, room);
  std::copy_n(text, kept, array);
  array[kept] = 0;
  return array;
}

}  // namespace

StringBuffer::StringBuffer(String& target, int size, bool keep) : target_(target), size_(size), keep_(keep) {
  if (keep && size < target.length()) size_ = target.length();
}

StringBuffer::StringBuffer(StringBuffer const& other)
    : target_(other.target_), size_(other.size_), keep_(other.keep_) {}

StringBuffer::operator wchar*() {
  freeArray();
  StringVal const* const kept = keep_ ? StringAccess::payload(target_) : nullptr;
  wchar const* const text = keep_ ? kept->stringValue() : KVW("");
  wchar* const array = newArray(size_, text, static_cast<std::size_t>(keep_ ? kept->length() : 0));
  array_ = array;
  wide_ = true;
  return array;
}

StringBuffer::operator char*() {
  freeArray();
  char const* const text = keep_ ? StringAccess::payload(target_)->stringAnsi() : "";
  char* const array = newArray(size_, text, std::strlen(text));
  array_ = array;
  wide_ = false;
  return array;
}

StringBuffer::~StringBuffer() {
  if (array_ == nullptr) return;
  StringVal* payload = wide_ ? StringVal::construct(static_cast<wchar const*>(array_), -1, -1)
                             : StringVal::construct(static_cast<char const*>(array_), -1, -1);
  freeArray();
  target_ = StringAccess::adopt(payload);
}

void StringBuffer::freeArray() {
  void* array = std::exchange(array_, nullptr);
  if (wide_) {
    delete[] static_cast<wchar*>(array);
  } else {
    delete[] static_cast<char*>(array);
  }
}

}  // namespace KV_1_1
