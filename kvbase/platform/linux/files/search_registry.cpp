// SPDX-License-Identifier: MIT
#include "kvbase/platform/linux/files/search_registry.h"

#include <algorithm>
#include <cstdint>
#include <mutex>

namespace KV_1_1 {
namespace platform {

namespace {

// Of constant initialisation and trivial destruction, so that searches work at any time: hence no container. A handle
// holds the number of its slot in the low half and, in the high half, how many searches had been started before it.
// That count never repeats within any life a handle could have.
struct Slot {
  std::uintptr_t handle;
  DirectorySearch* search;  // null: free
};
static_assert(sizeof(std::uintptr_t) == 8, "a handle has two halves of 32 bits");

constexpr std::uint32_t kFirstSlots = 16;
Slot firstSlots[kFirstSlots];

std::mutex mutex;
Slot* slots = firstSlots;
std::uint32_t capacity = kFirstSlots;
std::uint32_t used = 0;      // slots below are or were in use
std::uint32_t running = 0;   // slots in use
std::uint32_t freeSlot = 0;  // no free slot is below
std::uint32_t generation = 0;

void grow() {
  Slot* const larger = new Slot[2 * std::size_t{capacity}]();
  std::copy_n(slots, capacity, larger);
  if (slots != firstSlots) delete[] slots;
  slots = larger;
  capacity *= 2;
}

// With the last search goes what its forerunners had made the table grow by.
void shrinkIfIdle() {
  if (running != 0) return;
  if (slots != firstSlots) {
    delete[] slots;
    slots = firstSlots;
    capacity = kFirstSlots;
  }
  used = 0;
  freeSlot = 0;
}

Slot* slotOf(SearchHandle handle) {
  auto const number = reinterpret_cast<std::uintptr_t>(handle);
  std::uintptr_t const index = number & 0xFFFFFFFF;
  if (index >= used || slots[index].handle != number || slots[index].search == nullptr) return nullptr;
  return &slots[index];
}

}  // namespace

SearchHandle registerSearch(std::unique_ptr<DirectorySearch> search) {
  std::lock_guard<std::mutex> const lock(mutex);
  while (freeSlot < used && slots[freeSlot].search != nullptr) ++freeSlot;
  if (freeSlot == capacity) grow();
  generation = generation % 0x7FFFFFFF + 1;  // neither null nor the value of no search
  std::uintptr_t const number = (std::uintptr_t{generation} << 32) | freeSlot;
  slots[freeSlot] = {number, search.release()};
  used = std::max(used, freeSlot + 1);
  ++running;
  return reinterpret_cast<SearchHandle>(number);
}

DirectorySearch* searchOf(SearchHandle handle) {
  std::lock_guard<std::mutex> const lock(mutex);
  Slot const* const slot = slotOf(handle);
  return slot == nullptr ? nullptr : slot->search;
}

std::unique_ptr<DirectorySearch> removeSearch(SearchHandle handle) {
  std::lock_guard<std::mutex> const lock(mutex);
  Slot* const slot = slotOf(handle);
  if (slot == nullptr) return nullptr;
  std::unique_ptr<DirectorySearch> search(slot->search);
  slot->search = nullptr;
  freeSlot = std::min(freeSlot, static_cast<std::uint32_t>(slot - slots));
  --running;
  shrinkIfIdle();
  return search;
}

}  // namespace platform
}  // namespace KV_1_1
