// SPDX-License-Identifier: MIT
//
// Objects that are built when they are first needed and destroyed when the library that built them ends.
//
// A plain function-local static would do on Windows, where each module has an at-exit list of its own. On Linux the
// process has one list: a static built late is destroyed before the library's end code runs, even before statics of the
// program that still use it. So each library of the family keeps its own list and decides when it is run.
#pragma once

#include <atomic>
#include <new>
#include <utility>

#include "kvbase/export.h"

namespace KV_1_1 {

// The at-exit list of the library that this code is linked into. The class is never exported, so each library has its
// own list.
//
// Thread rule: any thread may register an object at any time; no other thread may use the list during destroyDownTo.
class KVBASE_LOCAL AtExitList {
 public:
  struct Entry {
    void (*destroy)(void* object);
    void* object;
    Entry* older;
  };

  static void add(Entry& entry) {
    entry.older = newest_.load(std::memory_order_relaxed);
    // Release: the thread that destroys the object sees it complete.
    while (!newest_.compare_exchange_weak(entry.older, &entry, std::memory_order_release, std::memory_order_relaxed)) {
    }
  }

  // The newest entry, as a mark for destroyDownTo; null for an empty list.
  static Entry* newest() { return newest_.load(std::memory_order_acquire); }

  // Destroys the objects registered after `mark`, newest first; all objects for a null mark. Objects registered
  // meanwhile are destroyed too.
  // REQUIRES: the object of the mark has not been destroyed.
  static void destroyDownTo(Entry* mark) {
    for (Entry* entry = newest(); entry != mark; entry = newest()) {
      newest_.store(entry->older, std::memory_order_relaxed);
      entry->destroy(entry->object);
    }
  }

 private:
  static inline std::atomic<Entry*> newest_{nullptr};
};

// For a function-local static, whose guard makes construction safe on any threads:
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
    AtExitList::add(entry_);
  }
  Lazy(Lazy const&) = delete;
  Lazy& operator=(Lazy const&) = delete;
  // No destructor: the at-exit list destroys the object, and the compiler must not register it with the process's list.

  T& get() { return *std::launder(reinterpret_cast<T*>(storage_)); }

 private:
  static void destroy(void* object) { static_cast<T*>(object)->~T(); }

  alignas(T) unsigned char storage_[sizeof(T)];
  AtExitList::Entry entry_ = {&destroy, storage_, nullptr};
};

}  // namespace KV_1_1
