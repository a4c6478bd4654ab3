// SPDX-License-Identifier: MIT
#include "kvbase/core/internal/lazy.h"

namespace KV_1_1 {

std::atomic<EndList::Entry*> EndList::newest_{nullptr};

void EndList::enter(Entry& entry) {
  entry.older = newest_.load(std::memory_order_relaxed);
  // Release: who takes the list down sees the object complete.
  while (!newest_.compare_exchange_weak(entry.older, &entry, std::memory_order_release, std::memory_order_relaxed)) {
  }
}

EndList::Entry* EndList::newest() {
  return newest_.load(std::memory_order_acquire);
}

void EndList::takeDownTo(Entry* mark) {
  for (Entry* entry = newest(); entry != mark && entry != nullptr; entry = newest()) {
    newest_.store(entry->older, std::memory_order_relaxed);
    entry->destroy(entry->object);
  }
}

}  // namespace KV_1_1
