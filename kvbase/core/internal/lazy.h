// SPDX-License-Identifier: MIT
//
// Objects that are built when first needed and taken down with the library.
//
// A plain function-local static would do on Windows, where each module has its own list of exits. On Linux the process
// has one: a static built late is destroyed before the library's end code runs, even before statics of the program that
// still use it. So the library keeps its own list, and library_globals.cpp says when which part of it is taken down.
#pragma once

#include <atomic>
#include <new>
#include <utility>

namespace KV_1_1 {

// The list of the objects to take down, newest first.
class EndList {
 public:
  struct Entry {
    void (*destroy)(void* object);
    void* object;
    Entry* older;
  };

  // Thread rule: any thread may enter an object at any time; nothing may run beside takeDownTo.
  static void enter(Entry& entry);
  static Entry* newest();
  // Destroys what was entered behind `mark`, newest first; all with a null mark. Objects entered meanwhile go too.
  static void takeDownTo(Entry* mark);

 private:
  static std::atomic<Entry*> newest_;
};

// Meant for a function-local static, whose guard makes the building safe on any threads:
//
//   String const& invalidCharacters() {
//     static Lazy<String const> set(KVW("*?"));
//     return set.get();
//   }
template <class T>
class Lazy {
 public:
  template <class... Arguments>
  explicit Lazy(Arguments&&... arguments) {
    new (storage_) T(std::forward<Arguments>(arguments)...);
    EndList::enter(entry_);
  }
  Lazy(Lazy const&) = delete;
  Lazy& operator=(Lazy const&) = delete;
  // No destructor: the end list destroys the object, and the compiler must enter nothing of its own.

  T& get() { return *std::launder(reinterpret_cast<T*>(storage_)); }

 private:
  static void destroy(void* object) { static_cast<T*>(object)->~T(); }

  alignas(T) unsigned char storage_[sizeof(T)];
  EndList::Entry entry_ = {&destroy, storage_, nullptr};
};

}  // namespace KV_1_1
