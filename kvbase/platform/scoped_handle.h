// SPDX-License-Identifier: MIT
#pragma once

#include <utility>

namespace KV_1_1 {
namespace platform {

// Owns a handle that has to be closed: a file, a search, a descriptor.
//
//   struct OpenFileTraits {
//     using Value = FileHandle;
//     static Value none() { return invalidFile(); }
//     static void close(Value file) { files().closeFile(file); }
//   };
//   ScopedHandle<OpenFileTraits> const file(files().openFile(...));
//   if (!file) return false;
template <class Traits>
class ScopedHandle {
 public:
  using Value = typename Traits::Value;

  ScopedHandle() : value_(Traits::none()) {}
  explicit ScopedHandle(Value value) : value_(value) {}
  ScopedHandle(ScopedHandle&& other) : value_(other.release()) {}
  ScopedHandle& operator=(ScopedHandle&& other) {
    ScopedHandle(std::move(other)).swap(*this);
    return *this;
  }
  ~ScopedHandle() {
    if (*this) Traits::close(value_);
  }

  explicit operator bool() const { return value_ != Traits::none(); }
  Value get() const { return value_; }
  // Gives up the ownership and returns the handle.
  Value release() { return std::exchange(value_, Traits::none()); }
  void swap(ScopedHandle& other) { std::swap(value_, other.value_); }

 private:
  Value value_;
};

}  // namespace platform
}  // namespace KV_1_1
