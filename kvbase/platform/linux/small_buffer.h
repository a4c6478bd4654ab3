// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <type_traits>

namespace KV_1_1 {
namespace platform {

// A growing array of trivially copyable values, the first N of which are stored in the object itself. Throws
// std::bad_alloc.
template <class T, std::size_t N>
class SmallBuffer {
  static_assert(std::is_trivially_copyable<T>::value, "values are copied as bytes");

 public:
  // Up to this size there is no block of its own.
  static constexpr std::size_t kSmall = N;

  SmallBuffer() = default;
  SmallBuffer(SmallBuffer const&) = delete;
  SmallBuffer& operator=(SmallBuffer const&) = delete;

  T* data() { return data_; }
  T const* data() const { return data_; }
  std::size_t size() const { return size_; }
  T& operator[](std::size_t i) { return data_[i]; }
  T operator[](std::size_t i) const { return data_[i]; }

  // Values that are added are not initialised.
  void resize(std::size_t size) {
    if (size > capacity_) grow(size);
    size_ = size;
  }
  void push(T value) {
    if (size_ == capacity_) grow(size_ + 1);
    data_[size_++] = value;
  }
  void append(T const* values, std::size_t n) {
    if (n == 0) return;
    if (n > capacity_ - size_) grow(size_ + n);
    std::memcpy(data_ + size_, values, n * sizeof(T));
    size_ += n;
  }

 private:
  void grow(std::size_t needed) {
    std::size_t const capacity = needed < 2 * capacity_ ? 2 * capacity_ : needed;
    std::unique_ptr<T[]> larger(new T[capacity]);
    std::memcpy(larger.get(), data_, size_ * sizeof(T));
    large_ = std::move(larger);
    data_ = large_.get();
    capacity_ = capacity;
  }

  T small_[N];
  std::unique_ptr<T[]> large_;
  T* data_ = small_;
  std::size_t size_ = 0;
  std::size_t capacity_ = N;
};

}  // namespace platform
}  // namespace KV_1_1
