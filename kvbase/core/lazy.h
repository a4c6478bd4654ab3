// SPDX-License-Identifier: MIT
//
// Objects that are built when they are first needed and destroyed when the library that built them ends.
//
// A plain function-local static would do on Windows, where each module has an at-exit list of its own. On Linux the
// process has one list: a static built late is destroyed before the library's end code runs, even before statics of the
// program that still use it. So each library of the family keeps a list of its own and says when it is run.
#pragma once

#include <atomic>
#include <new>
#include <utility>

#include "kvbase/export.h"

namespace KV_1_1 {

// The at-exit list of the library that this code is linked into. The class is never exported, so each library has its
// own list.
//
// Thread rule: any thread may enter an object at any time; nothing may run beside runDownTo.
class KVBASE_LOCAL AtExitList {
 public:
  struct Entry {
    void (*destroy)(void* object);
    void* object;
    Entry* older;
  };

  static void enter(Entry& entry) {
    entry.older = newest_.load(std::memory_order_relaxed);
    // Release: the thread that runs the list sees the object complete.
    while (!newest_.compare_exchange_weak(entry.older, &entry, std::memory_order_release, std::memory_order_relaxed)) {
    }
  }

  // The newest entry, as a mark for runDownTo; null for an empty list.
  static Entry* newest() { return newest_.load(std::memory_order_acquire); }

  // Destroys what was entered after `mark`, newest first; everything for a null mark. Objects that are entered
  // meanwhile are destroyed too.
  static void runDownTo(Entry* mark) {
    for (Entry* entry = newest(); entry != mark && entry != nullptr; entry = newest()) {
      newest_.store(entry->older, std::memory_order_relaxed);
      entry->destroy(entry->object);
    }
  }

 private:
  static inline std::atomic<Entry*> newest_{nullptr};
};

// Meant for a function-local static, whose guard makes the building safe on any threads:
//
//   String const& invalidCharacters() {
//     static Lazy<String const> set(KVW("*?"));
//     return set.get();
//   }
template <class T>
class KVBASE_LOCAL Lazy {
 public:
  template <class... Arguments>
  explicit Lazy(Arguments&&... arguments) {
    new (storage_) T(std::forward<Arguments>(arguments)...);
    AtExitList::enter(entry_);
  }
  Lazy(Lazy const&) = delete;
  Lazy& operator=(Lazy const&) = delete;
  // No destructor: the at-exit list destroys the object, and the compiler must enter nothing of its own.

  T& get() { return *std::launder(reinterpret_cast<T*>(storage_)); }

 private:
  static void destroy(void* object) { static_cast<T*>(object)->~T(); }

  alignas(T) unsigned char storage_[sizeof(T)];
  AtExitList::Entry entry_ = {&destroy, storage_, nullptr};
};

}  // namespace KV_1_1
