// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <functional>
#include <type_traits>
#include <utility>

namespace KV_1_1 {

// Owning pointer to an object of a class derived from BaseNode. Null is a legal value: there is no object.
//
//   SmartPtr<Directory const> folder = Directory::fromString(KVW("C:\\scans"));
//   if (folder) use(folder->getFullName());
//
// Ownership: each SmartPtr that is not null holds one reference; the last one destroys the object. The constructor from
// a raw pointer also takes an object that nobody owns yet. A SmartPtr must never point to an object on the stack or to a
// member of another object.
// Thread rule: owners of one object may live on different threads; one SmartPtr variable belongs to one thread at a
// time.
template <class T>
class SmartPtr {
 public:
  using element_type = T;

  constexpr SmartPtr() noexcept = default;
  constexpr SmartPtr(std::nullptr_t) noexcept {}
  SmartPtr(T* object) : object_(object) { acquire(); }
  SmartPtr(SmartPtr const& other) : object_(other.object_) { acquire(); }
  // Moves the reference without changing the count; `other` becomes null.
  SmartPtr(SmartPtr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}

  // Converts to a base class and to const, never back.
  template <class U, class = std::enable_if_t<std::is_convertible<U*, T*>::value>>
  SmartPtr(SmartPtr<U> const& other) : object_(other.get()) {
    acquire();
  }
  template <class U, class = std::enable_if_t<std::is_convertible<U*, T*>::value>>
  SmartPtr(SmartPtr<U>&& other) noexcept : object_(other.detach()) {}

  ~SmartPtr() {
    if (object_ != nullptr) object_->unref();
  }

  // The new reference is taken before the old one is released, so an object may be replaced by one that it owns. The old
  // one is released here: where `other` ends, compilers disagree.
  SmartPtr& operator=(SmartPtr other) noexcept {
    T* const old = std::exchange(object_, other.detach());
    if (old != nullptr) old->unref();
    return *this;
  }

  T* get() const noexcept { return object_; }
  // REQUIRES: not null.
  T& operator*() const { return *object_; }
  // REQUIRES: not null.
  T* operator->() const { return object_; }
  explicit operator bool() const noexcept { return object_ != nullptr; }

 private:
  template <class U>
  friend class SmartPtr;

  void acquire() {
    if (object_ != nullptr) object_->ref();
  }
  T* detach() noexcept { return std::exchange(object_, nullptr); }

  T* object_ = nullptr;
};

static_assert(sizeof(SmartPtr<class BaseNode>) == sizeof(void*), "a SmartPtr is one pointer");

template <class T, class U>
bool operator==(SmartPtr<T> const& a, SmartPtr<U> const& b) {
  return a.get() == b.get();
}
template <class T, class U>
bool operator!=(SmartPtr<T> const& a, SmartPtr<U> const& b) {
  return a.get() != b.get();
}
template <class T, class U>
bool operator==(SmartPtr<T> const& a, U* b) {
  return a.get() == b;
}
template <class T, class U>
bool operator!=(SmartPtr<T> const& a, U* b) {
  return a.get() != b;
}
template <class T, class U>
bool operator==(U* a, SmartPtr<T> const& b) {
  return a == b.get();
}
template <class T, class U>
bool operator!=(U* a, SmartPtr<T> const& b) {
  return a != b.get();
}
template <class T>
bool operator==(SmartPtr<T> const& a, std::nullptr_t) {
  return a.get() == nullptr;
}
template <class T>
bool operator!=(SmartPtr<T> const& a, std::nullptr_t) {
  return a.get() != nullptr;
}
template <class T>
bool operator==(std::nullptr_t, SmartPtr<T> const& b) {
  return b.get() == nullptr;
}
template <class T>
bool operator!=(std::nullptr_t, SmartPtr<T> const& b) {
  return b.get() != nullptr;
}
// Orders by address, for use as a key.
template <class T>
bool operator<(SmartPtr<T> const& a, SmartPtr<T> const& b) {
  return std::less<T*>()(a.get(), b.get());
}

}  // namespace KV_1_1
